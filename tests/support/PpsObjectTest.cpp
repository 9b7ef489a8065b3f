#include "harness/Testing.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/PpsServer.hpp>

#include <QDebug>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <filesystem>
#include <future>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace oz;
using namespace oz::harness;

namespace {

const QString Path = "/pps/services/box/status";

// A subscriber that counts its notifications and reads on each.
class Subscriber
{
public:
    explicit Subscriber(const QString &path, bool reads = true) : object(path)
    {
        QObject::connect(&object, &PpsObject::readyRead, [this, reads] {
            ++wakes;
            thread = QThread::currentThread();
            if (reads)
                read();
        });
        EXPECT_TRUE(object.open(PpsOpenMode::Subscribe)) << object.errorString().toStdString();
        if (reads)
            read();
    }
    QByteArray read()
    {
        bool ok = false;
        last = object.read(&ok);
        return last = ok ? last : "errno " + QByteArray::number(object.error());
    }

    PpsObject object;
    int wakes = 0;
    QByteArray last;
    QThread *thread = nullptr;
};

class PpsObjectTest : public DeviceTest
{
protected:
    void publish(const QVariantMap &attributes)
    {
        ASSERT_TRUE(publisher.publish(attributes)) << publisher.errorString().toStdString();
        settle();
    }
    // A descriptor that tells what happens in the directory of the object.
    [[nodiscard]] int watchBox(uint32_t mask) const
    {
        const int inotify = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        EXPECT_GE(::inotify_add_watch(inotify, qPrintable(root.file("/pps/services/box")), mask), 0);
        return inotify;
    }

    PpsPublisher publisher{Path};
};

TEST_F(PpsObjectTest, OnePublishWakesOnceAndWhatIsAlreadyThereWakesNobody)
{
    publish({{"a", 1}, {"b", "x"}});
    Subscriber subscriber(Path);
    EXPECT_EQ(subscriber.last, "@status\na:n:1\nb::x\n");
    settle();
    EXPECT_EQ(subscriber.wakes, 0) << "what was read right after open is no news";

    publish({{"b", "y"}, {"c", true}});
    EXPECT_EQ(subscriber.wakes, 1);
    EXPECT_EQ(subscriber.last, "@status\na:n:1\nb::y\nc:b:true\n");

    // The directory does not change, so nothing could wake anybody.
    const int inotify = watchBox(IN_ALL_EVENTS & ~IN_OPEN & ~IN_ACCESS & ~IN_CLOSE_NOWRITE);
    publish({{"c", true}});
    publish({});
    char buffer[256];
    EXPECT_EQ(::read(inotify, buffer, sizeof buffer), -1);
    EXPECT_EQ(errno, EAGAIN);
    ::close(inotify);
    EXPECT_EQ(subscriber.wakes, 1);
}

TEST_F(PpsObjectTest, WhatIsNotReadAfterOpenIsAnnouncedOnceFromTheEventLoop)
{
    publish({{"a", 1}});
    Subscriber subscriber(Path, false);
    EXPECT_EQ(subscriber.wakes, 0);
    settle();
    EXPECT_EQ(subscriber.wakes, 1);
    publish({{"a", 2}});
    EXPECT_EQ(subscriber.wakes, 2);
    EXPECT_EQ(subscriber.read(), "@status\na:n:2\n");
    EXPECT_EQ(subscriber.read(), "@status\na:n:2\n") << "with nothing new the whole object comes again";
}

TEST_F(PpsObjectTest, AChangeBetweenTheReadAndTheFirstReceiverIsNotMissed)
{
    publish({{"a", 1}});
    PpsObject object(Path);
    ASSERT_TRUE(object.open(PpsOpenMode::Subscribe));
    (void)object.read();
    publish({{"a", 2}});
    int wakes = 0;
    QObject::connect(&object, &PpsObject::readyRead, [&] { ++wakes; });
    settle();
    EXPECT_EQ(wakes, 1);
}

TEST_F(PpsObjectTest, AFilterDeliversAndNotifiesOnlyItsWholeNames)
{
    publish({{"a", 1}, {"ab", 1}, {"b", 1}, {"c", 1}});
    Subscriber subscriber(Path + "?f=a+c");
    EXPECT_EQ(subscriber.last, "@status\na:n:1\nc:n:1\n");
    publish({{"ab", 2}, {"b", 2}, {"A", 2}});
    EXPECT_EQ(subscriber.wakes, 0);
    publish({{"c", 2}, {"b", 3}});
    EXPECT_EQ(subscriber.wakes, 1);
    EXPECT_EQ(subscriber.last, "@status\na:n:1\nc:n:2\n");
    ASSERT_TRUE(publisher.removeAttributes({"a"}));
    settle();
    EXPECT_EQ(subscriber.wakes, 2);
    EXPECT_EQ(subscriber.last, "@status\nc:n:2\n");
}

TEST_F(PpsObjectTest, ADeltaIsWhatChangedSinceThisObjectsLastRead)
{
    publish({{"a", 1}, {"b", 1}, {"c", 1}});
    Subscriber subscriber(Path + "?delta");
    EXPECT_EQ(subscriber.last, "@status\na:n:1\nb:n:1\nc:n:1\n");
    EXPECT_EQ(subscriber.read(), "@status\n");
    publish({{"b", 2}, {"d", 1}});
    EXPECT_EQ(subscriber.last, "@status\nb:n:2\nd:n:1\n");
    ASSERT_TRUE(publisher.removeAttributes({"c"}));
    settle();
    EXPECT_EQ(subscriber.last, "@status\n-c\n");
    EXPECT_EQ(subscriber.wakes, 2);

    Subscriber both(Path + "?delta,f=a+d");
    EXPECT_EQ(both.last, "@status\na:n:1\nd:n:1\n");
    publish({{"b", 3}, {"d", 2}});
    EXPECT_EQ(both.last, "@status\nd:n:2\n");
    EXPECT_EQ(both.wakes, 1);
}

TEST_F(PpsObjectTest, AnotherOrderOrTextFormOfTheSameValuesIsNoNewsAndAnotherTypeIs)
{
    root.place(Path, "@status\na:n:2.5\nb::x\nc:json:{\"k\":[1,2],\"m\":-1}\nd::\xC3\xA9\n");
    Subscriber subscriber(Path);
    Subscriber delta(Path + "?delta");
    for (const char *same : {"@status\nd::\xC3\xA9\na:n:2.5\nc:json:{\"k\":[1,2],\"m\":-1}\nb::x\n",
             "a:n:25e-1\nb:c:\\x78\nc:json: { \"m\" : -1, \"k\" : [1, 2] }\nd:c:\\xC3\\xA9\n",
             "a:n:2.50\nb::x\nc:json:{\"\\u006b\":[1,2],\"m\":-1}\nd::\xC3\xA9\n"}) {
        root.place(Path, same);
        settle();
        EXPECT_EQ(subscriber.wakes, 0) << same;
        EXPECT_EQ(delta.read(), "@status\n");
    }
    const std::tuple<const char *, const char *> changes[] = {
        {"c:json:{\"k\":[2,1],\"m\":-1}\nb::x\na:n:2.5\nd::\xC3\xA9\n", "c:json:{\"k\":[2,1],\"m\":-1}\n"},
        {"c:json:{\"k\":[1,2.0]}\nb::x\na:n:2.5\nd::\xC3\xA9\n", "c:json:{\"k\":[1,2.0]}\n"},
        {"c:json:{\"k\":[1,2.0]}\nb::x\na::2.5\nd::\xC3\xA9\n", "a::2.5\n"},
        {"c:json:{\"k\":[1,2.0]}\nb::x\na::2.5\n", "-d\n"},
    };
    int wakes = 0;
    for (const auto &[content, change] : changes) {
        root.place(Path, content);
        settle();
        EXPECT_EQ(subscriber.wakes, ++wakes) << content;
        EXPECT_EQ(delta.last, QByteArray("@status\n") + change);
    }
    // Malformed content is delivered, but no delta counts from it.
    root.place(Path, "c:json:{\"k\":[1,2.0]}\nb:n:\na::2.5\n");
    settle();
    EXPECT_EQ(delta.last, "@status\nb:n:\n");
    root.place(Path, "c:json:{\"k\":[1,2.0]}\nb::x\na::2.5\ne::1\n");
    settle();
    EXPECT_EQ(delta.last, "@status\ne::1\n");

    // Nor does a publisher touch it.
    const int inotify = watchBox(IN_MOVED_TO);
    ASSERT_TRUE(publisher.publish({{"b", "x"}}) && publisher.replace(attributesOf(Path)));
    char buffer[256];
    EXPECT_EQ(::read(inotify, buffer, sizeof buffer), -1);
    ::close(inotify);
}

TEST_F(PpsObjectTest, JsonTextsAreComparedByTheirValues)
{
    const std::tuple<const char *, const char *, bool> rows[] = {
        {R"({"a":1,"b":{"c":"x"}})", R"({"b":{"c":"x"},"a":1})", true},
        {R"({"a":1,"b":2})", R"({ "a":1, "b" :2})", true},
        {R"([1,2])", "[1\t,2 ]", true},
        {R"(["a","b"])", R"(["\u0061","b"])", true},
        {R"([1.0,-0,1e2])", R"([1.00,0,100.0])", true},
        {R"([12345678901234567890123])", R"([12345678901234567890124])", true},
        {R"({"a":"b","b":"a"})", R"({"b":"a","a":"b"})", true},
        {R"([1])", R"([1.0])", false},
        {R"([1])", R"(["1"])", false},
        {R"([1])", R"([12])", false},
        {R"([-1])", R"([1])", false},
        {R"([true])", R"([null])", false},
        {R"(["10.0"])", R"(["10.00"])", false},
        {R"([[1],2])", R"([[1,2]])", false},
        {R"({})", R"({"a":1})", false},
        {R"({"a":1})", R"({"b":1})", false},
        {R"({"a":{"b":1}})", R"({"b":{"a":1}})", false},
        {R"({"a":"b"})", R"({"a":"c"})", false},
        {R"({"a":1,"b":"x"})", R"({"a":1,"ab":2,"b":"x"})", false},
        {R"({"a":1,"b":2})", R"({"a":1,"b":2,"c":"a"})", false},
        {R"(["\"x"])", R"(["\"y"])", false},
        {R"(["x"])", R"(["x)", false},
    };
    for (const auto &[one, other, areSame] : rows) {
        for (const auto &[first, second] : {std::pair(one, other), std::pair(other, one)}) {
            const QByteArray line = QByteArray("v:json:") + second + '\n';
            root.place(Path, QByteArray("v:json:") + first + '\n');
            PpsObject object(Path + "?delta");
            ASSERT_TRUE(object.open(PpsOpenMode::Subscribe));
            (void)object.read();
            root.place(Path, line);
            EXPECT_EQ(object.read(), areSame ? "@status\n" : "@status\n" + line) << first << ' ' << second;
        }
    }
}

TEST_F(PpsObjectTest, ASubscriberSurvivesRemovalAndReturnOfItsObjectAndOfItsDirectory)
{
    publish({{"a", 1}});
    Subscriber subscriber(Path + "?delta");
    ASSERT_TRUE(publisher.remove());
    settle();
    EXPECT_EQ(subscriber.last, "errno 2");
    EXPECT_EQ(subscriber.wakes, 1);
    publish({{"a", 1}});
    EXPECT_EQ(subscriber.wakes, 2);
    EXPECT_EQ(subscriber.last, "@status\na:n:1\n") << "all of it: the object is a new one";

    const QDir tree(root.file(""));
    const auto expectReturn = [&](const char *how) {
        ASSERT_TRUE(waitUntil([&] { return subscriber.last == "errno 2"; })) << how;
        publish({{"a", 2}});
        ASSERT_TRUE(waitUntil([&] { return subscriber.last == "@status\na:n:2\n"; })) << how;
        publish({{"a", 3}});
        EXPECT_EQ(subscriber.last, "@status\na:n:3\n") << how;
    };
    ASSERT_TRUE(QDir(tree.filePath("pps/services")).removeRecursively());
    expectReturn("folder removed");
    for (const char *moved : {"pps/services/box/status", "pps/services/box", "pps/services", "pps"}) {
        ASSERT_EQ(std::rename(qPrintable(tree.filePath(moved)), qPrintable(tree.filePath("away"))), 0);
        expectReturn(moved);
        ASSERT_TRUE(QFile::remove(tree.filePath("away")) || QDir(tree.filePath("away")).removeRecursively());
    }
    // Something of that name comes back with all that is in it.
    ASSERT_TRUE(QDir().rename(tree.filePath("pps"), tree.filePath("away")));
    ASSERT_TRUE(waitUntil([&] { return subscriber.last == "errno 2"; }));
    ASSERT_TRUE(QDir().rename(tree.filePath("away"), tree.filePath("pps")));
    EXPECT_TRUE(waitUntil([&] { return subscriber.last == "@status\na:n:3\n"; }));
}

TEST_F(PpsObjectTest, AnOverflowOfTheKernelsQueueLosesNothingForGood)
{
    publish({{"a", 0}});
    Subscriber subscriber(Path);
    PpsPublisher neighbour("/pps/services/box/other");
    const int inotify = watchBox(IN_MOVED_TO);
    QFile limit("/proc/sys/fs/inotify/max_queued_events");
    ASSERT_TRUE(limit.open(QIODevice::ReadOnly));
    for (int i = limit.readAll().toInt() / 2 + 10; i > 0; --i)
        ASSERT_TRUE(publisher.publish({{"a", i}}) && neighbour.publish({{"a", i}}));
    // A second queue on the same directory tells that the subscriber's must have overflowed.
    bool overflowed = false;
    alignas(inotify_event) char buffer[64 * 1024];
    for (ssize_t size; (size = ::read(inotify, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
            overflowed = overflowed || (event->mask & IN_Q_OVERFLOW);
            at += ssize_t(sizeof *event + event->len);
        }
    }
    ::close(inotify);
    ASSERT_TRUE(overflowed);
    publish({{"a", -1}}); // its event is among the lost ones
    ASSERT_TRUE(waitUntil([&] { return subscriber.last == "@status\na:n:-1\n"; }));
    publish({{"a", -2}});
    EXPECT_EQ(subscriber.last, "@status\na:n:-2\n");
}

TEST_F(PpsObjectTest, ThousandsOfSubscribersShareOneDescriptorAndNeighboursStayAsleep)
{
    const auto name = [](int i) { return "/pps/many/object" + QString::number(i); };
    std::vector<std::unique_ptr<Subscriber>> subscribers;
    for (int i = 0; i < 3000; ++i) {
        ASSERT_TRUE(PpsPublisher(name(i % 30)).publish({{"a", 0}}));
        subscribers.push_back(std::make_unique<Subscriber>(name(i % 30)));
    }
    int descriptors = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        descriptors += std::filesystem::read_symlink(entry, gone) == "anon_inode:inotify";
    }
    EXPECT_EQ(descriptors, 1);
    ASSERT_TRUE(PpsPublisher(name(2)).publish({{"a", 1}}));
    settle();
    for (int i = 0; i < 3000; ++i)
        ASSERT_EQ(subscribers[std::size_t(i)]->wakes, i % 30 == 2 ? 1 : 0) << i;
}

TEST_F(PpsObjectTest, OpenAndWriteFailWithTheErrnoOfTheReason)
{
    publish({{"a", 1}});
    const std::tuple<QString, PpsOpenMode::Types, int> rows[] = {
        {"/pps/services/box/nothing", PpsOpenMode::Subscribe, ENOENT},
        {"/pps/services/box/nothing", PpsOpenMode::Publish, ENOENT},
        {"/pps/services/box", PpsOpenMode::Subscribe, EISDIR},
        {"pps/relative", PpsOpenMode::Subscribe, EINVAL},
        {"/pps/../etc/passwd", PpsOpenMode::Subscribe, EINVAL},
        {"/pps/services/box/.status.tmp", PpsOpenMode::Subscribe, EINVAL},
        {Path + "?what", PpsOpenMode::Subscribe, EINVAL},
        {Path + "?f=", PpsOpenMode::Subscribe, EINVAL},
        {Path, {}, EINVAL},
        {Path, PpsOpenMode::PublishSubscribe, 0},
    };
    for (const auto &[path, mode, error] : rows) {
        PpsObject object(path);
        EXPECT_EQ(object.open(mode), error == 0) << path.toStdString();
        EXPECT_EQ(object.error(), error) << path.toStdString();
        EXPECT_EQ(object.isOpen(), error == 0);
        EXPECT_EQ(object.errorString().isEmpty(), error == 0);
    }
    PpsObject object(Path);
    bool ok = true;
    EXPECT_TRUE(object.read(&ok).isEmpty());
    EXPECT_FALSE(ok);
    EXPECT_EQ(object.error(), EBADF);
    ASSERT_TRUE(object.open(PpsOpenMode::Publish));
    EXPECT_TRUE(object.read(&ok).isEmpty() && !ok && object.error() == EBADF);
    for (const char *bad : {"no colons\n", "@other\na::1\n", "a:n:x\n", ""}) {
        EXPECT_FALSE(object.write(bad));
        EXPECT_EQ(object.error(), EINVAL);
    }
    EXPECT_FALSE(object.write("a::" + QByteArray(1 << 20, 'x')));
    EXPECT_EQ(object.error(), EMSGSIZE);
    EXPECT_TRUE(object.write("b::new\n-a\n"));
    Subscriber reader(Path);
    EXPECT_EQ(reader.last, "@status\nb::new\n");
    EXPECT_FALSE(reader.object.write("a::1\n"));
    EXPECT_EQ(reader.object.error(), EBADF);
}

TEST_F(PpsObjectTest, FileModesDecideWhoMayReadAndWrite)
{
    ASSERT_TRUE(PpsPublisher("/pps/private", 0640).publish({{"a", 1}}));
    ASSERT_TRUE(PpsPublisher("/pps/public", 0644).publish({{"a", 1}}));
    EXPECT_EQ(root.mode("/pps/private"), 0640u);
    ASSERT_TRUE(PpsPublisher("/pps/private").publish({{"a", 2}}));
    EXPECT_EQ(root.mode("/pps/private"), 0640u) << "a publish keeps the mode";
    root.setMode("/pps/private", 0);
    root.setMode("/pps/public", 0444);
    EXPECT_EQ(openErrorWithoutRights("/pps/private", PpsOpenMode::Subscribe), EACCES);
    EXPECT_EQ(openErrorWithoutRights("/pps/public", PpsOpenMode::Subscribe), 0);
    EXPECT_EQ(openErrorWithoutRights("/pps/public", PpsOpenMode::Publish), EACCES);
}

TEST_F(PpsObjectTest, APublishKeepsTheOwnerWhomRootWouldLockOutElse)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give an object away";
    ASSERT_TRUE(PpsPublisher("/pps/private", 0640).publish({{"a", 1}}));
    const QString file = root.file("/pps/private");
    ASSERT_EQ(::chown(file.toLocal8Bit().constData(), 1234, 5678), 0);
    ASSERT_TRUE(PpsPublisher("/pps/private").publish({{"a", 2}}));
    EXPECT_EQ(QFileInfo(file).ownerId(), 1234u);
    EXPECT_EQ(QFileInfo(file).groupId(), 5678u);
}

TEST_F(PpsObjectTest, AWaitingReadReturnsWithTheNextChangeAndEndsWithTheObject)
{
    publish({{"a", 1}});
    PpsObject object(Path + "?wait,delta");
    ASSERT_TRUE(object.open(PpsOpenMode::Subscribe));
    EXPECT_EQ(object.read(), "@status\na:n:1\n");
    std::thread other([reader = ::gettid()] {
        awaitBlocked(reader);
        PpsPublisher(Path).publish({{"a", 1}}); // no news
        awaitBlocked(reader);
        PpsPublisher(Path).publish({{"a", 2}});
    });
    EXPECT_EQ(object.read(), "@status\na:n:2\n");
    other.join();
    std::thread remover([reader = ::gettid()] {
        awaitBlocked(reader);
        PpsPublisher(Path).remove();
    });
    bool ok = true;
    (void)object.read(&ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(object.error(), ENOENT);
    remover.join();
}

TEST_F(PpsObjectTest, NotifiesOnTheThreadThatItMovedTo)
{
    publish({{"a", 1}});
    Subscriber subscriber(Path);
    std::promise<QThread *> started;
    std::atomic<QEventLoop *> running = nullptr;
    std::thread other([&] {
        QEventLoop loop;
        running = &loop;
        started.set_value(QThread::currentThread());
        loop.exec();
        EXPECT_EQ(subscriber.last, "@status\na:n:2\n");
        EXPECT_EQ(subscriber.wakes, 1);
        EXPECT_EQ(subscriber.thread, QThread::currentThread());
        subscriber.object.close();
    });
    QObject::connect(
        &subscriber.object, &PpsObject::readyRead, &subscriber.object, [&] { running.load()->quit(); });
    subscriber.object.moveToThread(started.get_future().get());
    ASSERT_TRUE(publisher.publish({{"a", 2}}));
    other.join();
}

TEST_F(PpsObjectTest, NotifiesFromAnEventLoopThatComesLater)
{
    publish({{"a", 1}});
    PpsServer server("/pps/services/box/control");
    ASSERT_TRUE(server.listen());
    std::thread other([&] {
        Subscriber status(Path + "?wait");
        Subscriber control("/pps/services/box/control", false);
        std::thread([&] { EXPECT_TRUE(publisher.publish({{"a", 2}})); }).join();
        EXPECT_EQ(status.read(), "@status\na:n:2\n") << "which watches, without a loop";
        QEventLoop loop;
        std::thread([&] { EXPECT_TRUE(publisher.publish({{"a", 3}})); }).join();
        while (status.wakes == 0 || control.wakes == 0)
            loop.processEvents(QEventLoop::WaitForMoreEvents);
        EXPECT_EQ(status.last, "@status\na:n:3\n");
    });
    ASSERT_TRUE(waitUntil([&] { return server.clientCount() == 1; }));
    EXPECT_TRUE(server.send(1, QByteArray("hello")));
    other.join();
}

// Lets a system call fail from now on, in this thread.
void forbidCall(long call, int error)
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, std::uint32_t(call), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | std::uint32_t(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(filter), filter};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

// Both ways of subscribing to what cannot be watched hear of a change, late, with one warning for the folder.
void expectLateNews(LogCapture *log, const char *reason)
{
    PpsPublisher publisher(Path);
    Subscriber early(Path);
    PpsObject late(Path);
    int lateWakes = 0;
    ASSERT_TRUE(late.open(PpsOpenMode::Subscribe));
    EXPECT_EQ(late.read(), early.last);
    QObject::connect(&late, &PpsObject::readyRead, [&] { ++lateWakes; });
    EXPECT_EQ(log->take(),
        QStringList{QString("\"%1\" cannot be watched, so what changes there is heard late: \"%2\"")
                        .arg(devicePath("/pps/services/box"), reason)});
    EXPECT_EQ(log->categories(), QStringList{"oz.support"});
    ASSERT_TRUE(publisher.publish({{"a", 2}}));
    EXPECT_TRUE(waitUntil([&] { return early.last == "@status\na:n:2\n" && lateWakes == 1; }));
    EXPECT_EQ(early.object.error(), 0);
}

TEST_F(PpsObjectTest, WhatCannotBeWatchedIsReadAndHeardLateAndWatchedAsSoonAsItCanBe)
{
    publish({{"a", 1}});
    const auto inUnlistedFolder = [&] {
        root.setMode("/pps/services/box", 0311);
        expectLateNews(&log, "Permission denied");
        root.setMode("/pps/services/box", 0711 | 0444);
        return HasFailure() ? 1 : 0;
    };
    EXPECT_EQ(runWithoutPrivileges(inUnlistedFolder), 0);
    publish({{"a", 1}});
    std::thread([&] {
        QEventLoop loop;
        forbidCall(SYS_inotify_add_watch, ENOSPC);
        expectLateNews(&log, "No space left on device; the limit is fs.inotify.max_user_watches");
    }).join();

    publish({{"a", 1}});
    std::thread([&] {
        QEventLoop loop;
        PpsObject object(Path);
        int wakes = 0;
        QByteArray last;
        QObject::connect(&object, &PpsObject::readyRead, [&] {
            ++wakes;
            last = object.read();
        });
        qWarning() << "A sanitizer looks at its first stream through a pipe";
        {
            const NoFreeDescriptors none;
            ASSERT_TRUE(object.open(PpsOpenMode::Subscribe));
        }
        EXPECT_EQ(log.take().size(), 2);
        ASSERT_TRUE(waitUntil([&] { return wakes == 1; })) << "what was there at open";
        ASSERT_TRUE(publisher.publish({{"a", 2}}));
        EXPECT_TRUE(waitUntil([&] { return wakes == 2; }));
        {
            NoFreeDescriptors none;
            const pid_t child = ::fork();
            if (child == 0) {
                none.lift();
                ::_exit(PpsPublisher(Path).publish({{"a", 3}}) ? 0 : 1);
            }
            ASSERT_EQ(::waitpid(child, nullptr, 0), child);
            (void)waitUntil([&] { return wakes > 2; }, 100); // it cannot be read
        }
        EXPECT_TRUE(waitUntil([&] { return wakes >= 3; }));
        EXPECT_EQ(object.error(), 0);
        ASSERT_TRUE(publisher.publish({{"a", 4}}));
        EXPECT_TRUE(waitUntil([&] { return last == "@status\na:n:4\n"; }));
        EXPECT_EQ(wakes, 4) << "and told nobody before it could be";
    }).join();
}

TEST(DeviceRootTest, FollowsTheEnvironmentVariableThenTheRuntimeDirectory)
{
    qputenv("OZ_DEVICE_ROOT", "/tmp/some//root/");
    EXPECT_EQ(devicePath("/pps/x"), "/tmp/some/root/pps/x");
    qputenv("OZ_DEVICE_ROOT", "relative");
    EXPECT_EQ(deviceRoot(), QDir::currentPath() + "/relative");
    qunsetenv("OZ_DEVICE_ROOT");
    if (QDir("/pps").exists())
        GTEST_SKIP() << "this machine has a tree of its own at /pps";
    qputenv("XDG_RUNTIME_DIR", "/tmp/runtime");
    EXPECT_EQ(deviceRoot(), "/tmp/runtime/ozdevice");
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(deviceRoot(), "/run/user/" + QString::number(::geteuid()) + "/ozdevice");
}

} // namespace
