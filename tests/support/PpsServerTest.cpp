#include "harness/Testing.hpp"

#include <oz/DeviceFile.hpp>
#include <oz/DeviceServer.hpp>
#include <oz/Limits.hpp>
#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/PpsServer.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <array>
#include <barrier>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace oz;
using namespace oz::harness;
using namespace std::chrono_literals;

namespace {

const QString Path = "/pps/services/box/control";

// A service in a process of its own, see EchoService.cpp.
class ServiceProcess
{
public:
    explicit ServiceProcess(std::chrono::milliseconds startsAfter = {}) : m_pid(::fork())
    {
        if (m_pid == 0) {
            const std::string delay = std::to_string(startsAfter.count());
            ::execl(OZ_ECHO_SERVICE, OZ_ECHO_SERVICE, qPrintable(Path), delay.c_str(), nullptr);
            ::_exit(127);
        }
        if (startsAfter.count() == 0) {
            EXPECT_TRUE(waitUntil([] {
                PpsObject probe(Path);
                return probe.open(PpsOpenMode::PublishSubscribe);
            }));
        }
    }
    ~ServiceProcess() { stop(); }
    void pause() const
    {
        ::kill(m_pid, SIGSTOP);
        EXPECT_EQ(::waitpid(m_pid, nullptr, WUNTRACED), m_pid);
    }
    void stop()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(std::exchange(m_pid, 0), nullptr, 0);
        }
    }

private:
    pid_t m_pid;
};

class PpsServerTest : public DeviceTest
{
protected:
    ~PpsServerTest() override
    {
        qunsetenv("OZ_GRACE_TIME");
        setWaitLimit(60s);
    }
};

// A client with a connection.
class Client : public PpsObject
{
public:
    explicit Client(const QString &path = Path, PpsOpenMode::Types mode = PpsOpenMode::PublishSubscribe)
        : PpsObject(path)
    {
        EXPECT_TRUE(open(mode)) << errorString().toStdString();
    }
};

// A client that notes what it hears, from its event loop.
class Hearing : public Client
{
public:
    using Client::Client;

    QStringList heard;

private:
    const QMetaObject::Connection m_onMessage = connect(this, &PpsObject::readyRead, this, [this] {
        bool ok = false;
        const QByteArray message = read(&ok);
        heard.append(ok ? QString::fromUtf8(message) : QString("errno %1").arg(error()));
    });
    const QMetaObject::Connection m_onReturn =
        connect(this, &PpsObject::serviceReturned, this, [this] { heard.append("returned"); });
};

TEST_F(PpsServerTest, AnswersEachClientAloneInOrderAndKnowsWhoItIs)
{
    ServiceProcess service;
    Client first(Path + "?wait");
    Client second(Path + "?wait");
    for (const char *message : {"a", "b", "a"})
        EXPECT_TRUE(first.write(message));
    EXPECT_TRUE(second.write("who"));
    EXPECT_EQ(first.read(), "echo a");
    EXPECT_EQ(first.read(), "echo b");
    EXPECT_EQ(first.read(), "echo a");
    EXPECT_EQ(second.read(),
        "@control\npid:n:" + QByteArray::number(::getpid()) + "\nuid:n:" + QByteArray::number(::getuid())
            + '\n');
    const QByteArray large(200'000, 'x');
    EXPECT_TRUE(first.write(large));
    EXPECT_EQ(first.read().size(), 5 + large.size());
    EXPECT_FALSE(first.write("")) << "an empty message could not be told from the end";
    EXPECT_EQ(first.error(), EINVAL);
    EXPECT_FALSE(first.write(QByteArray(2'000'000, 'x')));
    EXPECT_EQ(first.error(), EMSGSIZE);
    EXPECT_TRUE(first.write("still there"));
    EXPECT_EQ(first.read(), "echo still there");
}

TEST_F(PpsServerTest, AWaitingReadEndsWhenTheServiceGoesAway)
{
    for (const char *order : {"die", "leave"}) {
        ServiceProcess service;
        Client client(Path + "?wait");
        ASSERT_TRUE(client.write("silence") && client.write(order));
        bool ok = true;
        EXPECT_EQ(client.read(&ok), QByteArray());
        EXPECT_FALSE(ok);
        EXPECT_EQ(client.error(), ECONNRESET) << order;
    }
    PpsObject client(Path);
    EXPECT_FALSE(client.open(PpsOpenMode::PublishSubscribe));
    EXPECT_EQ(client.error(), ECONNREFUSED) << "the socket of a killed service stays";
    ServiceProcess next;
    EXPECT_TRUE(client.open(PpsOpenMode::PublishSubscribe)) << "and is replaced by the next";
}

TEST_F(PpsServerTest, AWaitHasAnEndBeforeWhichAnAnswerCounts)
{
    ServiceProcess service;
    Client client(Path + "?wait");
    setWaitLimit(50ms);
    ASSERT_TRUE(client.write("silence"));
    EXPECT_EQ(client.read(), QByteArray());
    EXPECT_EQ(client.error(), ETIMEDOUT);
    setWaitLimit(20s);
    ASSERT_TRUE(client.write("late"));
    EXPECT_EQ(client.read(), "at last");

    setWaitLimit(50ms);
    service.pause();
    while (client.write(QByteArray(100'000, 'x'))) { }
    EXPECT_EQ(client.error(), ETIMEDOUT) << "there is no room for another";
    Client unwilling;
    while (unwilling.write(QByteArray(100'000, 'x'))) { }
    EXPECT_EQ(unwilling.error(), EAGAIN) << "who does not wait is not held up";
}

TEST_F(PpsServerTest, AClientHearsOfAnswersFromItsEventLoop)
{
    ServiceProcess service;
    Hearing client;
    bool ok = true;
    EXPECT_EQ(client.read(&ok), QByteArray());
    EXPECT_TRUE(!ok && client.error() == EAGAIN);
    EXPECT_TRUE(client.write("a") && client.write("b"));
    ASSERT_TRUE(waitUntil([&] { return client.heard.size() == 2; }));
    settle();
    EXPECT_EQ(client.heard, (QStringList{"echo a", "echo b"}));
}

TEST_F(PpsServerTest, AFilterLeavesOfEachMessageItsAttributesAndADeltaIsTheWholeMessage)
{
    const ServiceProcess service;
    Hearing client(Path + "?f=b,delta");
    for (const char *message : {"x\na::1\nb::1", "x\na::2\nb::1", "x\na::3"})
        ASSERT_TRUE(client.write(message));
    ASSERT_TRUE(waitUntil([&] { return client.heard.size() == 3; })) << "each is news, whatever it holds";
    EXPECT_EQ(client.heard, (QStringList{"echo x\nb::1\n", "echo x\nb::1\n", "echo x\n"}));
}

TEST_F(PpsServerTest, AnOpenObjectComesBackWithItsServiceAndHearsNoError)
{
    ServiceProcess service;
    Hearing client;
    Hearing writer(Path, PpsOpenMode::Publish);
    ASSERT_TRUE(client.write("a"));
    ASSERT_TRUE(waitUntil([&] { return client.heard == QStringList{"echo a"}; }));
    service.stop();
    // Before the event loop knows, after it, and from another thread.
    EXPECT_TRUE(client.write("b"));
    settle();
    EXPECT_TRUE(client.write("c"));
    std::thread([&] { EXPECT_TRUE(client.write("d")); }).join();
    EXPECT_TRUE(writer.write("shout"));
    EXPECT_TRUE(client.read().isEmpty());
    EXPECT_EQ(client.error(), EAGAIN);
    EXPECT_FALSE(client.write(QByteArray(100'000, 'x'))) << "there is an end to what is kept";
    settle();
    EXPECT_EQ(client.heard, QStringList{"echo a"});

    const ServiceProcess next;
    ASSERT_TRUE(waitUntil([&] { return writer.heard == QStringList{"returned"}; }));
    ASSERT_TRUE(waitUntil([&] { return client.heard.contains("echo d") && client.heard.size() >= 5; }));
    client.heard.removeOne("returned");
    client.heard.removeOne("to all");
    EXPECT_EQ(client.heard, (QStringList{"echo a", "echo b", "echo c", "echo d"}));
}

TEST_F(PpsServerTest, AnAnswerThatWillNotComeIsToldAtOnceAndAServiceThatStaysAwayAfterTheGraceTime)
{
    ServiceProcess service;
    Hearing client;
    Hearing waiting;
    ASSERT_TRUE(client.write("a") && waiting.write("silence"));
    ASSERT_TRUE(waitUntil([&] { return client.heard == QStringList{"echo a"}; }));
    service.stop();
    ASSERT_TRUE(waitUntil([&] { return waiting.heard == QStringList{"errno 104"}; }));
    EXPECT_EQ(client.heard.size(), 1);

    qputenv("OZ_GRACE_TIME", "0.15");
    ServiceProcess brief;
    ASSERT_TRUE(waitUntil([&] { return waiting.heard.last() == "returned"; }));
    brief.stop();
    settle();
    ASSERT_TRUE(client.write("lost"));
    ASSERT_TRUE(waitUntil([&] { return client.heard.last() == "errno 104"; }));
    EXPECT_FALSE(client.write("b"));
    EXPECT_EQ(client.error(), EPIPE);
    EXPECT_EQ(log.take(), QStringList{"\"/pps/services/box/control\" lost messages that no service took: 1"});
    const ServiceProcess next;
    ASSERT_TRUE(waitUntil([&] { return client.heard.last() == "returned"; }));
    ASSERT_TRUE(client.write("c"));
    ASSERT_TRUE(waitUntil([&] { return client.heard.last() == "echo c"; }));
    EXPECT_EQ(client.heard, (QStringList{"echo a", "returned", "errno 104", "returned", "echo c"}));
}

TEST_F(PpsServerTest, AWaitingObjectWaitsForItsServiceAndForNoneThatStaysAway)
{
    // Without an event loop, and with one.
    const auto exchange = [](const QString &path) {
        std::optional<ServiceProcess> service(std::in_place);
        Client client(path);
        ASSERT_TRUE(client.write("a"));
        EXPECT_EQ(client.read(), "echo a");
        service->stop();
        service.emplace(50ms);
        EXPECT_TRUE(client.write("b")) << client.errorString().toStdString();
        EXPECT_EQ(client.read(), "echo b");
        EXPECT_EQ(client.error(), 0);

        ASSERT_TRUE(client.write("late"));
        service->stop();
        EXPECT_EQ(client.read(), QByteArray());
        EXPECT_EQ(client.error(), ECONNRESET) << "the answer is lost, and that is told once";
        qputenv("OZ_GRACE_TIME", "0.05");
        service.emplace();
        ASSERT_TRUE(client.write("d"));
        EXPECT_EQ(client.read(), "echo d");
        service->stop();
        EXPECT_FALSE(client.write("e"));
        EXPECT_EQ(client.error(), EPIPE);
        EXPECT_EQ(client.read(), QByteArray());
        EXPECT_EQ(client.error(), ECONNRESET);
        qunsetenv("OZ_GRACE_TIME");
    };
    exchange(Path + "?wait");
    std::thread(exchange, Path + "?wait").join();
}

TEST_F(PpsServerTest, WhatWasSentArrivesThoughTheSenderLeavesAndReadsNothing)
{
    PpsServer server(Path);
    QList<QByteArray> received;
    QObject::connect(
        &server, &PpsServer::received, [&](const PpsServer::Client &client, const QByteArray &message) {
            received.append(message);
            server.send(client.id, "answer");
            if (message == "leave")
                server.disconnectClient(client.id);
        });
    ASSERT_TRUE(server.listen());
    Client client;
    ASSERT_TRUE(client.write("first"));
    ASSERT_TRUE(waitUntil([&] { return received.size() == 1; }));
    ASSERT_TRUE(client.write("second"));
    client.close();
    ASSERT_TRUE(waitUntil([&] { return server.clientCount() == 0; }));
    EXPECT_EQ(received, (QList<QByteArray>{"first", "second"}));

    ASSERT_TRUE(client.open(PpsOpenMode::PublishSubscribe));
    ASSERT_TRUE(client.write("leave") && client.write("never read"));
    ASSERT_TRUE(waitUntil([&] { return received.size() == 3 && server.clientCount() == 0; }));
    EXPECT_EQ(client.read(), "answer");
    EXPECT_EQ(client.read(), QByteArray());
    EXPECT_EQ(client.error(), ECONNRESET);
    // Whom a living service sends away stays away.
    EXPECT_TRUE(waitUntil([&] { return !client.write("more"); }));
    EXPECT_EQ(client.error(), EPIPE);
    EXPECT_EQ(log.take().size(), 1) << "of what was kept until that was known";
}

TEST_F(PpsServerTest, RefusesASecondServiceAndLeavesForeignObjectsAlone)
{
    PpsServer server(Path);
    ASSERT_TRUE(server.listen(0600));
    PpsServer rival(Path);
    EXPECT_FALSE(rival.listen());
    EXPECT_EQ(rival.error(), EADDRINUSE);
    ASSERT_TRUE(PpsPublisher("/pps/services/box/status").publish({{"a", 1}}));
    PpsServer onState("/pps/services/box/status");
    EXPECT_FALSE(onState.listen());
    EXPECT_EQ(onState.error(), EEXIST);
    EXPECT_EQ(root.mode(Path), 0600u);
    root.setMode(Path, 0);
    EXPECT_EQ(openErrorWithoutRights(Path, PpsOpenMode::PublishSubscribe), EACCES);

    const QString deep = "/pps/" + QString("directory-with-a-long-name/").repeated(8) + "control";
    PpsServer far(deep);
    ASSERT_TRUE(far.listen()) << far.errorString().toStdString();
    const Client client(deep); // paths longer than a socket address
}

TEST_F(PpsServerTest, MisbehavingClientsLoseTheirConnectionAndNobodyElseNotices)
{
    PpsServer server(Path);
    int received = 0;
    int gone = 0;
    QObject::connect(&server, &PpsServer::received, [&](const PpsServer::Client &client, const QByteArray &) {
        ++received;
        server.send(client.id, QByteArray(100'000, 'y'));
    });
    QObject::connect(&server, &PpsServer::disconnected, [&] { ++gone; });
    ASSERT_TRUE(server.listen());

    Client deaf; // asks and asks, and reads no answer
    Client good;
    for (int i = 0; i < 20; ++i)
        (void)deaf.write("more");
    ASSERT_TRUE(waitUntil([&] { return gone == 1; }));
    received = 0;
    QByteArray answer;
    ASSERT_TRUE(good.write("hello"));
    ASSERT_TRUE(waitUntil([&] { return !(answer = good.read()).isEmpty(); }));
    EXPECT_EQ(received, 1);
    EXPECT_EQ(answer.size(), 100'000);
    good.close();
    EXPECT_TRUE(waitUntil([&] { return server.clientCount() == 0; }));
    EXPECT_FALSE(server.send(1, QByteArray("x")));
    EXPECT_EQ(server.error(), ENOTCONN);
}

TEST_F(PpsServerTest, ASlotMayDestroyTheServerThatDropsAClient)
{
    QPointer<PpsServer> server = new PpsServer(Path);
    QObject::connect(server, &PpsServer::disconnected, [&] { delete server; });
    ASSERT_TRUE(server->listen());
    const Client deaf;
    ASSERT_TRUE(waitUntil([&] { return server->clientCount() == 1; }));
    while (server)
        server->send(1, QByteArray(100'000, 'y'));
    const auto every = QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot;
    EXPECT_EQ(QDir(root.file("/pps/services/box")).entryList(every), QStringList())
        << "nothing is left of it";
}

TEST_F(PpsServerTest, OfManyServicesThatStartAtOnceOneServes)
{
    for (int round = 0; round < 100; ++round) {
        constexpr int count = 4;
        std::barrier start(count);
        std::barrier looked(count);
        std::atomic<int> serving = 0;
        std::array<std::thread, count> services;
        for (std::thread &service : services) {
            service = std::thread([&] {
                QEventLoop loop;
                PpsServer server(Path);
                start.arrive_and_wait();
                if (server.listen())
                    ++serving;
                else
                    EXPECT_EQ(server.error(), EADDRINUSE);
                looked.arrive_and_wait();
                EXPECT_TRUE(PpsObject(Path).open(PpsOpenMode::PublishSubscribe));
                looked.arrive_and_wait();
            });
        }
        for (std::thread &service : services)
            service.join();
        ASSERT_EQ(serving, 1) << round;
    }
}

TEST_F(PpsServerTest, WithoutAFreeDescriptorClientsWaitUntilThereIsOne)
{
    PpsServer server(Path);
    ASSERT_TRUE(server.listen());
    const Client served;
    ASSERT_TRUE(waitUntil([&] { return server.clientCount() == 1; }));
    const Client client;
    NoFreeDescriptors none;
    int turns = 0;
    bool ended = false;
    QTimer::singleShot(50, [&] { ended = true; });
    for (; !ended; ++turns)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_LT(turns, 20) << "it does not spin meanwhile";
    EXPECT_EQ(server.clientCount(), 1);
    none.lift();
    EXPECT_TRUE(waitUntil([&] { return server.clientCount() == 2; }));
}

TEST_F(PpsServerTest, AUserWithTooManyClientsLosesTheOneThatWasIdleForLongest)
{
    constexpr int most = 500;
    PpsServer server(Path);
    ASSERT_TRUE(server.listen());
    std::vector<quint64> came;
    std::vector<quint64> gone;
    QObject::connect(&server, &PpsServer::connected, [&](const auto &client) { came.push_back(client.id); });
    QObject::connect(
        &server, &PpsServer::disconnected, [&](const auto &client) { gone.push_back(client.id); });
    std::vector<std::unique_ptr<Client>> clients;
    const auto connectOne = [&] {
        clients.push_back(std::make_unique<Client>());
        EXPECT_TRUE(waitUntil([&] { return came.size() == clients.size(); }));
    };
    for (int i = 0; i < most; ++i)
        connectOne();
    EXPECT_TRUE(gone.empty());
    server.hold(came[0]);
    EXPECT_TRUE(clients[1]->write("x::1\n"));
    settle();
    connectOne();
    EXPECT_EQ(gone, (std::vector{came[2]}));
    EXPECT_EQ(server.clientCount(), most);
    const QStringList told = log.take();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].contains("/control as it takes; some are ended or refused"));
    server.release(came[0]);
    connectOne();
    EXPECT_EQ(gone.back(), came[0]) << "and it is told once";
}

TEST_F(PpsServerTest, UsersHaveTurnsHoweverMuchOneOfThemSends)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be another user, too";
    // Messages of many connections, and lines of one: each costs the service a while.
    const QString devicePath = "/dev/box";
    PpsServer server(Path);
    DeviceServer device(devicePath);
    QByteArrayList received;
    const auto receive = [&](const auto &, const QByteArray &message) {
        received.append(message);
        std::this_thread::sleep_for(200us);
    };
    QObject::connect(&server, &PpsServer::received, receive);
    QObject::connect(&device, &DeviceServer::received, receive);
    ASSERT_TRUE(server.listen() && device.listen());
    constexpr int clients = 300;
    std::vector<std::unique_ptr<Client>> flood;
    flood.reserve(clients);
    for (int i = 0; i < clients; ++i) {
        flood.push_back(std::make_unique<Client>());
        for (int j = 0; j < 3; ++j)
            EXPECT_TRUE(flood.back()->write("flood"));
    }
    const auto write = [&](const QByteArray &lines) {
        const int file = openDevice(devicePath.toUtf8().constData(), DeviceOpen::ReadWrite);
        return writeDevice(file, lines.constData(), std::size_t(lines.size())) == lines.size() ? file : -1;
    };
    const int lines = write(QByteArray("flood\n").repeated(600));
    EXPECT_GE(lines, 0);
    EXPECT_EQ(runWithoutRights([] { return Client().write("other") ? 0 : 1; }), 0);
    EXPECT_EQ(runWithoutRights([&] { return write("other\n") >= 0 ? 0 : 1; }, 65533), 0);
    EXPECT_TRUE(waitUntil([&] { return received.size() == clients * 3 + 600 + 2; }));
    // Messages that were under way before they were accepted, and a millisecond of the flood's in each round.
    EXPECT_LT(received.indexOf("other"), 60);
    EXPECT_LT(received.lastIndexOf("other"), 60);
    closeDevice(lines);
}

TEST_F(PpsServerTest, WhereAllPlacesAreTakenTheUserWithTheMostGivesWay)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be another user, too";
    PpsServer server(Path);
    ASSERT_TRUE(server.listen());
    std::map<uid_t, int> clients;
    QObject::connect(&server, &PpsServer::connected, [&](const PpsServer::Client &client) {
        server.hold(client.id);
        ++clients[client.uid];
    });
    QObject::connect(
        &server, &PpsServer::disconnected, [&](const PpsServer::Client &client) { --clients[client.uid]; });
    // Two users with as many as they can have, until this process lets them go.
    std::array<int, 2> hold{};
    ASSERT_EQ(::pipe2(hold.data(), O_CLOEXEC), 0);
    std::vector<std::future<int>> greedy;
    for (const uid_t user : {65533u, 65534u}) {
        greedy.push_back(std::async(std::launch::async, [&, user] {
            return runWithoutRights(
                [&] {
                    ::close(hold[1]);
                    std::vector<std::unique_ptr<Client>> held(500);
                    std::generate(held.begin(), held.end(), [] { return std::make_unique<Client>(); });
                    char end = 0;
                    return int(::read(hold[0], &end, 1));
                },
                user);
        }));
    }
    EXPECT_TRUE(waitUntil([&] { return clients[65533] + clients[65534] >= 900; }));
    const Client modest;
    EXPECT_TRUE(waitUntil([&] { return clients[0] == 1; }));
    const Client another;
    EXPECT_TRUE(waitUntil([&] { return clients[0] == 2; }));
    ::close(hold[1]);
    for (std::future<int> &each : greedy)
        EXPECT_EQ(each.get(), 0);
    EXPECT_TRUE(waitUntil([&] { return server.clientCount() == 2; }));
    for (const QString &told : log.take())
        EXPECT_TRUE(told.endsWith("as it takes; some are ended or refused"));
    ::close(hold[0]);
}

TEST_F(PpsServerTest, AConversationWithADeviceKeepsEveryLineUpToItsLimits)
{
    const QString path = "/dev/talk";
    DeviceServer device(path);
    device.keepEveryLine(10'000, 100'000);
    QByteArrayList received;
    quint64 client = 0;
    int left = 0;
    QObject::connect(&device, &DeviceServer::connected, [&](const auto &each) { client = each.id; });
    QObject::connect(&device, &DeviceServer::received,
        [&](const auto &, const QByteArray &line) { received.append(line); });
    QObject::connect(&device, &DeviceServer::disconnected, [&] { ++left; });
    ASSERT_TRUE(device.listen());
    const auto connectAnew = [&] {
        const quint64 before = client;
        const int file = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{AF_UNIX, {}};
        qstrncpy(address.sun_path, root.file(path).toUtf8().constData(), sizeof address.sun_path);
        EXPECT_EQ(::connect(file, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        EXPECT_TRUE(waitUntil([&] { return client != before; }));
        return file;
    };
    const auto write = [](int file, const QByteArray &text) {
        EXPECT_EQ(::send(file, text.constData(), std::size_t(text.size()), 0), text.size());
    };
    int file = connectAnew();
    const QByteArray longest(10'000, 'x');
    write(file, longest + '\n');
    EXPECT_TRUE(waitUntil([&] { return received == QByteArrayList{longest}; }));
    QByteArray expected;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(device.send(client, QByteArray::number(i)));
        expected += QByteArray::number(i) + '\n';
    }
    QByteArray read;
    EXPECT_TRUE(waitUntil([&] {
        char chunk[4096];
        const auto size = ::recv(file, chunk, sizeof chunk, MSG_DONTWAIT);
        read.append(chunk, std::max<qsizetype>(size, 0));
        return read == expected;
    }));
    write(file, longest + "y\n");
    EXPECT_TRUE(waitUntil([&] { return left == 1; }));
    ::close(file);
    file = connectAnew();
    device.disconnectClient(client);
    EXPECT_EQ(left, 2);
    ::close(file);
    file = connectAnew();
    for (int i = 0; i < 10'000 && left == 2; ++i) // more than the kernel takes
        (void)device.send(client, longest);
    EXPECT_TRUE(waitUntil([&] { return left == 3; }));
    ::close(file);
    EXPECT_EQ(received.size(), 1);
    const QStringList logged = log.take();
    EXPECT_EQ(logged.size(), 1);
    EXPECT_TRUE(logged.value(0).endsWith("has written too long a line to /dev/talk"));
}

TEST_F(PpsServerTest, AMessageOverTheLimitIsNotReceivedAndItsClientHearsOfIt)
{
    PpsServer server(Path);
    server.setMessageLimit(100);
    ASSERT_TRUE(server.listen());
    QByteArrayList heard;
    QObject::connect(&server, &PpsServer::received,
        [&](const PpsServer::Client &, const QByteArray &message) { heard.append(message); });
    QObject::connect(
        &server, &PpsServer::refused, [&](const PpsServer::Client &client, const QByteArray &beginning) {
            server.send(client.id, "too long: " + beginning);
        });
    Client client(Path + "?wait");
    const QByteArray longest(100, 'x');
    EXPECT_TRUE(client.write(longest) && client.write(longest + "yz") && client.write("z"));
    EXPECT_TRUE(waitUntil([&] { return heard.size() == 2; }));
    EXPECT_EQ(heard, (QByteArrayList{longest, "z"}));
    EXPECT_EQ(client.read(), "too long: " + longest);
}

} // namespace
