#include "harness/ControlService.hpp"
#include "harness/Process.hpp"
#include "harness/Testing.hpp"

#include <oz/PpsPublisher.hpp>
#include <oz/client/DaemonClient.hpp>
#include <oz/client/DaemonObjects.hpp>
#include <oz/client/PrivateDaemon.hpp>
#include <oz/client/ScenarioFollower.hpp>

#include <QElapsedTimer>
#include <QFileInfo>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::client;
using namespace oz::harness;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

namespace {

// The error as "KIND ERRNO TEXT".
std::string textOf(const DaemonError &error)
{
    const char *const kinds[] = {"unreachable", "lost", "silent", "refused"};
    return std::string(kinds[error.kind()]) + ' ' + std::to_string(error.error()) + ' ' + error.what();
}

// The error that a call throws; empty where it throws none.
std::string errorOf(const std::function<void()> &call)
{
    try {
        call();
    } catch (const DaemonError &error) {
        return textOf(error);
    }
    return {};
}

class DaemonClientTest : public DeviceTest
{
protected:
    // The outcome of a request that waits, that waits and runs the event loop, and that does not wait.
    void expectError(const std::string &expected, const std::string &what)
    {
        for (const bool runsEventLoop : {false, true}) {
            EXPECT_EQ(errorOf([&] { client.ask("describe", {}, {20ms, runsEventLoop}); }), expected) << what;
        }
        if (what == "silent")
            return;
        std::string error;
        QObject context;
        client.askLater("describe", {}, &context,
            [&](const QVariant &, const std::optional<DaemonError> &failure) { error = textOf(*failure); });
        EXPECT_EQ(error, "") << "it is told later";
        EXPECT_TRUE(waitUntil([&] { return !error.empty(); })) << what;
        EXPECT_EQ(error, expected) << what;
    }

    const DaemonClient client;
};

TEST_F(DaemonClientTest, TellsWhyARequestCameToNothing)
{
    expectError("unreachable 2 No such file or directory", "absent");
    ControlService service(DaemonObjects::Control, ControlService::hangUp);
    const std::tuple<const char *, ControlService::Serve, const char *> rows[] = {
        {"dies", ControlService::hangUp, "lost 104 Connection reset by peer"},
        {"silent", [](PpsServer &, quint64) {}, "silent 110 Connection timed out"},
        {"malformed", ControlService::answer("rubbish\n"), "lost 74 the answer is malformed"},
        {"refuses", ControlService::answer("@control\nerr:n:16\nerrstr::it is busy\n"),
            "refused 16 it is busy"},
    };
    for (const auto &[what, serve, expected] : rows) {
        service.serveWith(serve);
        expectError(expected, what);
    }
}

TEST_F(DaemonClientTest, BringsTheAnswerAlsoUnderALongRoot)
{
    const QString deep = root.file('/' + QString(120, 'd'));
    qputenv("OZ_DEVICE_ROOT", deep.toLocal8Bit());
    const ControlService service(
        DaemonObjects::Control, ControlService::answer("@control\ndat:json:{\"a\":1}\n"));
    const QVariant expected = QVariantMap{{"a", 1}};
    EXPECT_EQ(DaemonClient(deep).ask("describe"), expected);
    QVariant answer;
    QObject context;
    client.askLater(
        "describe", {}, &context, [&](const QVariant &data, const std::optional<DaemonError> &error) {
            EXPECT_FALSE(error);
            answer = data;
        });
    auto gone = std::make_unique<QObject>();
    client.askLater("describe", {}, gone.get(), [](auto &&...) { ADD_FAILURE() << "nobody listens"; });
    gone.reset();
    EXPECT_TRUE(waitUntil([&] { return answer == expected; }));
}

TEST_F(DaemonClientTest, WaitsUntilADaemonIsReady)
{
    EXPECT_FALSE(client.waitUntilReady(10ms));
    int rounds = 0;
    EXPECT_FALSE(client.waitUntilReady(20s, [&] { return ++rounds < 3; }));
    EXPECT_EQ(rounds, 3);
    const ControlService service(DaemonObjects::Control, ControlService::hangUp);
    EXPECT_TRUE(client.waitUntilReady(0ms));
    // The control object is for the daemon's user; others see that its process lives.
    const auto isReadyForOthers = [&] { return runWithoutRights([&] { return client.isReady() ? 1 : 0; }); };
    root.setMode(DaemonObjects::Control, 0600);
    root.place(DaemonObjects::Status, "@status\npid:n:" + QByteArray::number(::getpid()) + '\n');
    EXPECT_EQ(isReadyForOthers(), 1);
    root.place(DaemonObjects::Status, "@status\npid:n:2147483646\n");
    EXPECT_EQ(isReadyForOthers(), ::geteuid() == 0 ? 0 : 1);
}

TEST_F(DaemonClientTest, FollowsAnObjectWhileTheDaemonLives)
{
    const QString path = DaemonObjects::Requests;
    const auto look = [] { return false; };
    EXPECT_THAT(errorOf([&] { (void)client.follow(path, {20s}, look); }), HasSubstr("unreachable 2 "));
    ControlService service(DaemonObjects::Control, ControlService::hangUp);
    EXPECT_FALSE(client.follow(path, {10ms}, look));
    for (const bool runsEventLoop : {false, true}) {
        int looks = 0;
        EXPECT_TRUE(client.follow(path, {20s, runsEventLoop}, [&] {
            // Each change follows a look.
            EXPECT_TRUE(PpsPublisher(path).publish({{"count", ++looks}}));
            return looks == 3;
        }));
        EXPECT_EQ(looks, 3);
    }
}

// The notifications of a follower: the number and state of the scenario, and how many entries came.
class Followed
{
public:
    Followed()
    {
        QObject::connect(&m_follower, &ScenarioFollower::told, [this](const QVariantMap &told) {
            state = told.value("number").toString() + ' ' + told.value("state").toString();
            entries += told.value("entries").toList().size();
        });
        QObject::connect(&m_follower, &ScenarioFollower::lost, [this] { isLost = true; });
    }
    QString state;
    qsizetype entries = 0;
    bool isLost = false;

private:
    ScenarioFollower m_follower;
};

TEST(ScenarioFollowerTest, TellsEachScenarioFromItsBeginningAndTheEndOfTheDaemon)
{
    for (const bool isKilled : {true, false}) {
        const DeviceRoot root;
        Process daemon;
        daemon.run(OZ_DAEMON, {"--config", "/dev/null", "--simulated"});
        awaitDaemon(&daemon);
        const auto play = [&](const QByteArray &steps) {
            root.place("/s.json", "{\"steps\": [" + steps + "]}");
            const QVariantMap order{{"file", root.file("/s.json")}, {"speed", "max"}};
            (void)DaemonClient().ask("play", order);
        };
        Followed early;
        play(R"({"repeat": 600, "steps": [{"say": "x"}]})");
        EXPECT_TRUE(waitUntil([&] { return early.state == "1 passed"; })) << early.state.toStdString();
        EXPECT_EQ(early.entries, 600) << "more than come in an answer";
        Followed late;
        EXPECT_TRUE(waitUntil([&] { return late.state == "1 passed"; }));
        EXPECT_EQ(late.entries, 600);
        play(R"({"say": "y"}, {"expect": "battery.level == 1", "within": 3000})");
        (void)DaemonClient().ask("scenario-speed", QVariantMap{{"speed", 1}});
        EXPECT_TRUE(waitUntil([&] { return early.entries == 601 && late.entries == 601; }))
            << early.entries << ' ' << late.entries;
        EXPECT_EQ(early.state, "2 playing");
        EXPECT_FALSE(early.isLost);
        isKilled ? daemon.kill() : daemon.terminate();
        EXPECT_TRUE(waitUntil([&] { return isKilled ? early.isLost : early.state == "2 stopped"; }));
    }
}

TEST(PrivateDaemonTest, SaysWhyItDoesNotStartAndLeavesNothing)
{
    const DeviceRoot folder;
    qputenv("XDG_RUNTIME_DIR", folder.file("").toLocal8Bit());
    EXPECT_EQ(errorOf([] { const PrivateDaemon none({.program = "/nowhere/ozdeviced"}); }),
        "unreachable 2 /nowhere/ozdeviced: No such file or directory");
    EXPECT_THAT(
        errorOf([] { const PrivateDaemon none({.program = OZ_DAEMON, .phone = "{\n\"batery\": 1}"}); }),
        HasSubstr("the simulated phone did not start: ozdeviced: "));
    EXPECT_THAT(errorOf([] { const PrivateDaemon silent({.program = "/bin/false"}); }),
        HasSubstr("the simulated phone did not start: /bin/false has ended"));
    // A process that has ended owns nothing any more.
    const pid_t owner = ::fork();
    if (owner == 0)
        ::_exit(0);
    ASSERT_EQ(::waitpid(owner, nullptr, 0), owner);
    Process orphan;
    orphan.run(OZ_DAEMON, {"--private", QString::number(owner), "--config", "/dev/null", "--simulated"});
    orphan.awaitEnd();
    EXPECT_EQ(orphan.exitCode(), 1);
    EXPECT_THAT(orphan.errors().toStdString(), HasSubstr("No such process"));
    EXPECT_FALSE(QFileInfo::exists(folder.file(""))) << "an empty root goes too";
}

TEST(PrivateDaemonTest, HasARootOfItsOwnAndEndsWithItsOwner)
{
    QString root;
    {
        const PrivateDaemon daemon({.program = OZ_DAEMON, .phone = R"({"battery": {"level": 7}})"});
        root = daemon.root();
        const QVariant name = QVariantMap{{"name", "battery.level"}};
        EXPECT_EQ(DaemonClient(root).ask("value", name), (QVariantMap{{"value", 7}}));
        EXPECT_FALSE(QFileInfo::exists(root + "/phone.json")) << "it has been read";
        EXPECT_EQ(daemon.log(), "");
        ::kill(daemon.id(), SIGKILL);
        EXPECT_TRUE(waitUntil([&] { return !daemon.isRunning(); }));
    }
    EXPECT_FALSE(QFileInfo::exists(root));
}

TEST(PrivateDaemonTest, EndsWithAnOwnerThatIsKilled)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t owner = ::fork();
    if (owner == 0) {
        const PrivateDaemon daemon({.program = OZ_DAEMON});
        const QByteArray told = daemon.root().toUtf8();
        if (::write(ends[1], told.constData(), std::size_t(told.size())) == told.size())
            ::pause();
        ::_exit(1);
    }
    QByteArray told(4096, 0);
    told.resize(std::max<ssize_t>(::read(ends[0], told.data(), 4096), 0));
    const QString root = QString::fromUtf8(told);
    ASSERT_TRUE(QFileInfo::exists(root + "/pps"));
    ::kill(owner, SIGKILL);
    ASSERT_EQ(::waitpid(owner, nullptr, 0), owner);
    EXPECT_TRUE(waitUntil([&] { return !QFileInfo::exists(root); }));
    for (const int end : ends)
        ::close(end);
}

} // namespace
