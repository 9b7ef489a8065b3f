#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/PpsServer.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <barrier>
#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace oz;
using namespace oz::testing;

namespace {

const QString Path = "/pps/services/box/control";

// A service in a process of its own, which answers "echo" and does what other messages say.
class ServiceProcess
{
public:
    ServiceProcess() : m_pid(::fork())
    {
        if (m_pid == 0)
            ::_exit(serve());
        EXPECT_TRUE(waitUntil([] {
            PpsObject probe(Path);
            return probe.open(PpsOpenMode::PublishSubscribe);
        }));
    }
    ~ServiceProcess() { stop(); }
    void stop()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(std::exchange(m_pid, 0), nullptr, 0);
        }
    }

private:
    static int serve()
    {
        PpsServer server(Path);
        QObject::connect(
            &server, &PpsServer::received, [&](const PpsServer::Client &client, const QByteArray &message) {
                if (message == "die")
                    ::_exit(0);
                if (message == "who")
                    server.send(client.id, QVariantMap{{"pid", int(client.pid)}, {"uid", int(client.uid)}});
                else if (message == "leave")
                    server.disconnectClient(client.id);
                else if (message != "silence")
                    server.send(client.id, "echo " + message);
            });
        if (!server.listen())
            return 1;
        for (;;)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    pid_t m_pid;
};

using PpsServerTest = DeviceTest;

// A client with a connection.
class Client : public PpsObject
{
public:
    explicit Client(const QString &path = Path) : PpsObject(path)
    {
        EXPECT_TRUE(open(PpsOpenMode::PublishSubscribe)) << errorString().toStdString();
    }
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

TEST_F(PpsServerTest, AClientWithoutWaitHearsOfAnswersAndOfTheEndFromItsEventLoop)
{
    ServiceProcess service;
    PpsObject client(Path);
    QList<QByteArray> heard;
    int wakes = 0;
    QObject::connect(&client, &PpsObject::readyRead, [&] {
        ++wakes;
        bool ok = false;
        const QByteArray message = client.read(&ok);
        heard.append(ok ? message : "errno " + QByteArray::number(client.error()));
    });
    ASSERT_TRUE(client.open(PpsOpenMode::PublishSubscribe));
    bool ok = true;
    EXPECT_EQ(client.read(&ok), QByteArray());
    EXPECT_TRUE(!ok && client.error() == EAGAIN);
    EXPECT_TRUE(client.write("a") && client.write("b"));
    ASSERT_TRUE(waitUntil([&] { return heard.size() == 2; }));
    service.stop();
    ASSERT_TRUE(waitUntil([&] { return heard.size() == 3; }));
    settle();
    EXPECT_EQ(heard, (QList<QByteArray>{"echo a", "echo b", "errno 104"}));
    EXPECT_EQ(wakes, 3);
    EXPECT_FALSE(client.write("c"));
    EXPECT_EQ(client.error(), EPIPE);
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
    EXPECT_FALSE(client.write("more"));
    EXPECT_EQ(client.error(), EPIPE);
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
        std::vector<std::thread> services;
        for (int i = 0; i < count; ++i) {
            services.emplace_back([&] {
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
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{3, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    int turns = 0;
    bool ended = false;
    QTimer::singleShot(50, [&] { ended = true; });
    for (; !ended; ++turns)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_LT(turns, 20) << "it does not spin meanwhile";
    EXPECT_EQ(server.clientCount(), 1);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
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
    EXPECT_TRUE(told[0].contains("has as many clients as it takes"));
    server.release(came[0]);
    connectOne();
    EXPECT_EQ(gone.back(), came[0]) << "and it is told once";
}

TEST_F(PpsServerTest, UsersHaveTurnsHoweverMuchOneOfThemSends)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be another user, too";
    constexpr int clients = 300;
    PpsServer server(Path);
    ASSERT_TRUE(server.listen());
    QList<QByteArray> received;
    QObject::connect(&server, &PpsServer::received,
        [&](const auto &, const QByteArray &message) { received.append(message); });
    std::vector<std::unique_ptr<Client>> flood;
    for (int i = 0; i < clients; ++i) {
        flood.push_back(std::make_unique<Client>());
        for (int j = 0; j < 3; ++j)
            EXPECT_TRUE(flood.back()->write("from::flood\n"));
    }
    EXPECT_EQ(runWithoutRights([] { return Client().write("from::other\n") ? 0 : 1; }), 0);
    EXPECT_TRUE(waitUntil([&] { return received.size() == clients * 3 + 1; }));
    // The turns that were under way before it was accepted, and one of the flood's in each round.
    const auto place = received.indexOf("from::other\n");
    EXPECT_LT(place, 150);
}

} // namespace
