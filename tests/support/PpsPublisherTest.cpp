#include "harness/Testing.hpp"

#include <oz/PpsPublisher.hpp>

#include <QDir>
#include <QRandomGenerator>

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::harness;

namespace {

const QString Path = "/pps/store/box";

using PpsPublisherTest = DeviceTest;

TEST_F(PpsPublisherTest, APublisherThatIsKilledLeavesAWholeObjectAndNoLock)
{
    PpsPublisher publisher(Path);
    ASSERT_TRUE(publisher.publish({{"first", 0}, {"text", QString()}, {"last", 0}}));
    int leftovers = 0;
    for (int round = 0; round < 600 || (leftovers == 0 && round < 20'000); ++round) {
        const QVariant before = attributesOf(Path).value("first");
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PpsPublisher victim(Path);
            for (int i = 1;; ++i)
                victim.publish({{"first", i}, {"text", QString(i % 5000, u'x')}, {"last", i}});
        }
        // The child may begin late.
        while (attributesOf(Path).value("first") == before)
            ::sched_yield();
        const timespec instant{0, long(QRandomGenerator::global()->bounded(1'000'000))};
        ::nanosleep(&instant, nullptr);
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);

        leftovers += QFile::exists(root.file("/pps/store/.box.tmp"));
        const QVariantMap box = attributesOf(Path);
        ASSERT_EQ(box.value("first"), box.value("last"));
        ASSERT_EQ(box.value("text").toString().size(), box.value("first").toInt() % 5000);
        // A number that no victim reaches: what is there already would not be published again.
        const int next = 1'000'000 + round;
        ASSERT_TRUE(
            publisher.publish({{"first", next}, {"text", QString(next % 5000, u'x')}, {"last", next}}));
        ASSERT_EQ(attributesOf(Path).value("last"), next);
        ASSERT_EQ(
            QDir(root.file("/pps/store")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{"box"});
    }
    EXPECT_GT(leftovers, 0) << "no publisher was ever killed in the middle";
}

TEST_F(PpsPublisherTest, ManyProcessesPublishAtOnceAndNothingIsLost)
{
    constexpr int processes = 8;
    constexpr int rounds = 300;
    std::vector<pid_t> children;
    for (int number = 0; number < processes; ++number) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PpsPublisher publisher(Path);
            const QString name = "p" + QString::number(number);
            bool good = true;
            for (int i = 1; i <= rounds; ++i) {
                good = good && publisher.publish({{name, i}});
                // This process's own attributes stand, whatever the others did since.
                good = good && attributesOf(Path).value(name) == i;
            }
            ::_exit(good ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const QVariantMap box = attributesOf(Path);
    EXPECT_EQ(box.size(), processes);
    for (const QVariant &value : box)
        EXPECT_EQ(value, rounds);
}

TEST_F(PpsPublisherTest, ReplacesRemovesAndRefuses)
{
    PpsPublisher publisher(Path);
    EXPECT_FALSE(publisher.remove());
    EXPECT_EQ(publisher.error(), ENOENT);
    EXPECT_FALSE(publisher.removeAttributes({"a"}));
    EXPECT_EQ(publisher.error(), ENOENT);
    ASSERT_TRUE(publisher.publish({{"a", 1}, {"b", 2}}));
    ASSERT_TRUE(publisher.replace({{"b", 3}, {"c", 4}}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"b", 3}, {"c", 4}}));
    ASSERT_TRUE(publisher.removeAttributes({"b", "never there"}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"c", 4}}));

    EXPECT_FALSE(publisher.publish({{"bad:name", 1}}));
    EXPECT_EQ(publisher.error(), EINVAL);
    EXPECT_TRUE(publisher.errorString().startsWith("attribute 'bad:name' cannot be encoded"));
    EXPECT_FALSE(publisher.publish({{"c", QString(700'000, u'x')}, {"d", QString(700'000, u'x')}}));
    ASSERT_TRUE(publisher.publish({{"c", QString(700'000, u'x')}}));
    EXPECT_FALSE(publisher.publish({{"d", QString(700'000, u'x')}}));
    EXPECT_EQ(publisher.error(), EMSGSIZE) << "each fits, the object that would come of it does not";
    EXPECT_FALSE(PpsPublisher(Path + "?delta").publish({{"a", 1}}));
    EXPECT_FALSE(PpsPublisher("/pps/store/box/below").publish({{"a", 1}}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"c", QString(700'000, u'x')}})) << "as it was";

    // The next publish mends what a person's edit left behind.
    root.place(Path, "broken line\nkept::yes\n");
    ASSERT_TRUE(publisher.publish({{"a", 1}}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"a", 1}, {"kept", "yes"}}));
}

TEST_F(PpsPublisherTest, AStoppedPublisherHoldsTheOthersUpForASecondAtMost)
{
    PpsPublisher publisher(Path);
    ASSERT_TRUE(publisher.publish({{"a", 1}}));
    const pid_t child = ::fork();
    if (child == 0) {
        // As one that is stopped between taking the lock and the end of its publish.
        const int fd = ::open(qPrintable(root.file("/pps/store/.box.tmp")), O_CREAT | O_RDWR, 0600);
        ::_exit(::flock(fd, LOCK_EX) == 0 && ::raise(SIGSTOP) == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
    ASSERT_TRUE(WIFSTOPPED(status));
    EXPECT_FALSE(publisher.publish({{"a", 2}}));
    EXPECT_EQ(publisher.error(), EBUSY);
    EXPECT_EQ(
        publisher.errorString(), "another publisher holds '" + root.file(Path) + "' and does not go on");
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(publisher.publish({{"a", 2}}));
    EXPECT_EQ(attributesOf(Path).value("a"), 2);
}

TEST_F(PpsPublisherTest, APublisherFollowsNoLink)
{
    const QDir pps(root.file("/pps"));
    ASSERT_TRUE(PpsPublisher("/pps/real/object").publish({{"a", 1}}));
    ASSERT_TRUE(QFile::link(pps.filePath("real"), pps.filePath("folder")));
    ASSERT_TRUE(QFile::link(pps.filePath("real/object"), pps.filePath("real/link")));
    const std::tuple<const char *, const char *> links[] = {
        {"/pps/folder/object", "/pps/folder"}, {"/pps/real/link", "/pps/real/link"}};
    for (const auto &[path, link] : links) {
        PpsPublisher publisher(path);
        for (const bool done : {publisher.publish({{"a", 2}}), publisher.replace({{"a", 2}}),
                 publisher.removeAttributes({"a"}), publisher.remove()}) {
            EXPECT_FALSE(done);
            EXPECT_EQ(publisher.error(), ELOOP);
            EXPECT_EQ(
                publisher.errorString(), '\'' + root.file(link) + "' is a link, which no publisher follows");
        }
        EXPECT_EQ(attributesOf(path), (QVariantMap{{"a", 1}})) << "a reader does not mind";
    }
    // One that was there before the folder was exchanged.
    PpsPublisher publisher("/pps/exchanged/object");
    ASSERT_TRUE(
        publisher.publish({{"a", 1}}) && QDir().rename(pps.filePath("exchanged"), pps.filePath("gone")));
    ASSERT_TRUE(publisher.publish({{"b", 2}}));
    EXPECT_EQ(attributesOf("/pps/exchanged/object"), (QVariantMap{{"b", 2}}));
    EXPECT_EQ(attributesOf("/pps/gone/object"), (QVariantMap{{"a", 1}}));
    ASSERT_TRUE(QDir(pps.filePath("exchanged")).removeRecursively()
        && QFile::link(pps.filePath("real"), pps.filePath("exchanged")));
    EXPECT_FALSE(publisher.publish({{"c", 3}}));
    EXPECT_EQ(publisher.error(), ELOOP);
}

TEST_F(PpsPublisherTest, APublisherEntersNoStrangersFolder)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder away";
    const QDir pps(root.file("/pps"));
    ASSERT_TRUE(PpsPublisher("/pps/real/object").publish({{"a", 1}}));
    ASSERT_EQ(::chown(qPrintable(pps.filePath("real")), 1234, 5678), 0);
    PpsPublisher stranger("/pps/real/object");
    EXPECT_FALSE(stranger.publish({{"a", 2}}));
    EXPECT_EQ(stranger.error(), EPERM);
    EXPECT_EQ(stranger.errorString(),
        '\'' + pps.filePath("real") + "' belongs to user 1234, who is none of the tree's");
}

} // namespace
