#include "services/MiracastClient.hpp"
#include "services/Services.hpp"
#include "services/WirelessDisplayRig.hpp"

#include <oz/device/DisplayInfo.hpp>

#include <QElapsedTimer>
#include <QFile>

#include <csignal>
#include <unistd.h>

// Real wireless displays, whose program ozcast is a stand-in that says what a script has it say.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using Client = MiracastClient;
using State = MiracastConnectionState;

const QString Sink = WirelessDisplayRig::Sink;
const QString Connected = "connectionState(Connected) "
                          "deviceConnected(\"10.0.0.2\", \"10.0.0.2\", Unknown, Unknown) "
                          "displayState(Playing) sessionId(ID) devicePixelSize(1280x720) ";
const QString Ended = "deviceName(\"\") hardwareAddress(\"\") connectionState(Disconnected) "
                      "deviceDisconnected() displayState(Stopped) sessionId(\"\") devicePixelSize(0x0) ";

class WirelessDisplayTest : public RigTest
{
protected:
    explicit WirelessDisplayTest(
        std::unique_ptr<WirelessDisplayRig> made = std::make_unique<WirelessDisplayRig>())
        : RigTest(std::move(made)), service(static_cast<WirelessDisplayRig &>(*rig))
    {
    }
    void start()
    {
        rig->start();
        startDaemon();
    }
    // The source's state once that begins with \a text.
    [[nodiscard]] static QString awaitSource(const QString &text)
    {
        EXPECT_TRUE(waitUntil([&] { return sourceOf("miracast").startsWith(text); })) << text.toStdString();
        return sourceOf("miracast");
    }

    WirelessDisplayRig &service;
};

class MdnsTest : public WirelessDisplayTest
{
protected:
    MdnsTest() : WirelessDisplayTest(std::make_unique<WirelessDisplayRig>("sink=10.0.0.2,10.0.0.3:9000")) { }
};

class ExtendingTest : public WirelessDisplayTest
{
protected:
    ExtendingTest()
        : WirelessDisplayTest(
            std::make_unique<WirelessDisplayRig>("extend=on sink=10.0.0.2 connect-seconds=0.1"))
    {
    }
};

class SeatTest : public WirelessDisplayTest
{
protected:
    SeatTest()
        : WirelessDisplayTest(std::make_unique<WirelessDisplayRig>("caster=seat mdns=off sink=10.0.0.2"))
    {
    }
};

TEST_F(MdnsTest, AScanListsSinksThatAcceptConnectionsFromTheirNamesOrAddresses)
{
    start();
    EXPECT_EQ(awaitSource("known"),
        "known: the X server :0; x264enc with voaacenc; a sink at 10.0.0.2; a sink at 10.0.0.3; sinks by "
        "mDNS; none on the air: fi.w1.wpa_supplicant1 is not on the system bus; install or start "
        "wpasupplicant");
    service.announce("Living room", "10.0.0.2", 7250);
    service.announce("Meeting room", "10.0.0.4", 7260, "p2pMAC=02:00:00:00:00:AA");
    service.announce("Mimic", "10.0.0.5", 7250, "p2pMAC=02:00:00:00:00:aa");
    service.announce("Nonsense", "10.0.0.6", 7250, "p2pMAC=ff:ff:ff:ff:ff:ff");
    service.announce("This device", "127.0.0.1", 22);
    service.announce("Everybody", "224.0.0.1", 7250);
    service.announce("Gone", "", 7250);
    service.script(R"({"accepting": ["10.0.0.2", "10.0.0.4", "10.0.0.5", "10.0.0.6"]})");
    Client client;
    EXPECT_EQ(client.after(Scan),
        "deviceDiscovered(\"Living room\", \"10.0.0.2\", Unknown, Unknown) "
        "deviceDiscovered(\"Meeting room\", \"02:00:00:00:00:aa\", Unknown, Unknown) "
        "deviceDiscovered(\"Mimic\", \"10.0.0.5\", Unknown, Unknown) "
        "deviceDiscovered(\"Nonsense\", \"10.0.0.6\", Unknown, Unknown) scanCompleted(Success)");
    EXPECT_EQ(service.heard(),
        QByteArrayList{R"({"probe":{"id":1,"limit-ms":1500,"targets":[{"address":"10.0.0.2","port":7250},)"
                       R"({"address":"10.0.0.3","port":9000},{"address":"10.0.0.4","port":7260},)"
                       R"({"address":"10.0.0.5","port":7250},{"address":"10.0.0.6","port":7250}]}})"});
    EXPECT_EQ(service.searches(), "(0,)");
    EXPECT_EQ(client.resultOf(connectTo("02:00:00:00:00:AA")), "Success");
    const QByteArrayList heard = service.heard();
    EXPECT_TRUE(
        heard.value(0).contains(R"("address":"10.0.0.4","connect-limit-ms":6000,"control-port":7260)"))
        << heard.value(0).toStdString();
    EXPECT_TRUE(heard.value(0).contains(R"("name":"Meeting room","port":7236)"));
}

TEST_F(MdnsTest, WithoutAvahiItFindsThoseAtFixedAddresses)
{
    startDaemon();
    EXPECT_TRUE(awaitSource("known: ").contains("; no sinks by mDNS, as org.freedesktop.Avahi is not on the "
                                                "system bus; install or start avahi-daemon; "));
    Client client;
    EXPECT_EQ(client.after(Scan),
        "deviceDiscovered(\"10.0.0.2\", \"10.0.0.2\", Unknown, Unknown) "
        "deviceDiscovered(\"10.0.0.3\", \"10.0.0.3\", Unknown, Unknown) scanCompleted(Success)");
    rig->start();
    EXPECT_TRUE(waitUntil([] { return sourceOf("miracast").contains("; sinks by mDNS; "); }));
}

TEST_F(WirelessDisplayTest, TheHardwareAddressIsThatOfTheNeighbour)
{
    if (const QString problem = namespaceProblem({"--user", "--map-root-user", "--net"}); !problem.isEmpty())
        GTEST_SKIP() << problem.toStdString();
    const QString network = "ip link add oz0 type veth peer name oz1; ip link set oz0 up; "
                            "ip address add 10.0.0.1/24 dev oz0; "
                            "ip neighbour add 10.0.0.2 lladdr 02:00:00:00:00:bb dev oz0; exec \"$@\"";
    daemon.setProcessEnvironment(rig->environment());
    daemon.start("unshare",
        QStringList{"--user", "--map-root-user", "--net", "sh", "-ec", network, "sh", OZ_DAEMON, "--config",
            "/dev/null"}
            + rig->arguments());
    awaitDaemon(&daemon);
    EXPECT_EQ(Client().after(Scan),
        "deviceDiscovered(\"10.0.0.2\", \"02:00:00:00:00:bb\", Unknown, Unknown) scanCompleted(Success)");
}

TEST_F(WirelessDisplayTest, ASessionShowsFromTheScanToItsEnd)
{
    start();
    Client client;
    const MiracastManager &miracast = client.miracast;
    EXPECT_TRUE(miracast.isSupported());
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "DeviceNotFound") << "before the first scan";
    EXPECT_EQ(client.resultOf(Scan), "Success");
    service.script(R"({"cast": []})");
    client.ask(connectTo(Sink));
    EXPECT_EQ(client.heard.waitFor(4),
        "deviceName(\"10.0.0.2\") hardwareAddress(\"10.0.0.2\") connectionState(Connecting) "
        "connectionState(2)");
    service.script(R"({"now": [{"playing": {"width": 1280, "height": 720}}]})");
    EXPECT_EQ(client.after([](const auto &) {}), Connected + "connectCompleted(Success)");
    const DisplayInfo display(2);
    EXPECT_TRUE(display.isWireless());
    EXPECT_EQ(display.pixelSize(), QSize(1280, 720));
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "InvalidRequest");
    EXPECT_EQ(client.resultOf(Resume), "InvalidRequest");
    EXPECT_EQ(client.after(Pause), "displayState(Paused) pauseCompleted(Success)");
    EXPECT_EQ(client.resultOf(Pause), "InvalidRequest");
    EXPECT_EQ(client.after(Resume), "displayState(Playing) resumeCompleted(Success)");
    // The sink does so by itself.
    service.script(R"({"now": [{"paused": {}}]})");
    EXPECT_EQ(client.heard.waitFor(2), "displayState(Paused) displayState(3)");
    EXPECT_EQ(client.after(Disconnect), Ended + "disconnectCompleted(Success)");
    EXPECT_EQ(client.resultOf(Disconnect), "InvalidRequest");
    EXPECT_EQ(client.resultOf(Pause), "InvalidRequest");
    for (const char *why : {"sink", "lost", "failed"}) {
        EXPECT_EQ(client.resultOf(connectTo(Sink)), "Success");
        service.script(
            QByteArray(R"({"now": [{"ended": {"text": "the sink is off", "why": ")") + why + "\"}}]}");
        EXPECT_TRUE(waitUntil([&] { return miracast.connectionState() == State::Disconnected; })) << why;
        EXPECT_TRUE(sourceOf("miracast").endsWith("; 10.0.0.2: the sink is off"));
    }
    QByteArrayList kinds;
    for (const QByteArray &line : service.heard())
        kinds.append(line.mid(2, line.indexOf('"', 2) - 2));
    EXPECT_EQ(kinds.join(' '), "probe cast pause resume end cast cast cast");
}

struct Failure
{
    const char *name;
    const char *script;
    const char *result;
    const char *logged = "";
};

void PrintTo(const Failure &row, std::ostream *out)
{
    *out << row.name;
}

class FailureTest : public WirelessDisplayTest, public ::testing::WithParamInterface<Failure>
{
};

TEST_P(FailureTest, AConnectionFailsForItsReasonAndTheNextOneSucceeds)
{
    start();
    Client client;
    EXPECT_EQ(client.resultOf(Scan), "Success");
    client.heard.take();
    QByteArray script = GetParam().script;
    service.script(script.replace("HUGE", QByteArray(70'000, 'x')));
    EXPECT_EQ(client.resultOf(connectTo(Sink)), GetParam().result);
    EXPECT_EQ(client.miracast.connectionState(), State::Disconnected);
    EXPECT_EQ(client.miracast.deviceName(), "");
    EXPECT_EQ(log.take(), *GetParam().logged ? QStringList{GetParam().logged} : QStringList());
    service.script("{}");
    // One that had to be ended is replaced at once.
    EXPECT_TRUE(waitUntil([&] { return client.resultOf(connectTo(Sink)) == "Success"; }));
    EXPECT_EQ(client.resultOf(Disconnect), "Success");
}

const Failure Failures[] = {
    {"lost", R"({"cast": [{"ended": {"why": "lost", "text": "it does not connect"}}]})", "ConnectionFailed",
        "MiracastManager:  Connection Code ( -1002 )"},
    {"refused", R"({"cast": [{"ended": {"why": "refused", "text": "no common format"}}]})",
        "ConnectionFailed", "MiracastManager:  Connection Code ( -1003 )"},
    {"failed", R"({"cast": [{"ended": {"why": "failed", "text": "the capture stopped"}}]})",
        "MiracastFailure"},
    {"silent", R"({"cast": []})", "MiracastFailure"},
    {"dead", R"({"cast": ["die"]})", "MiracastFailure"},
    {"closed", R"({"cast": ["close"]})", "MiracastFailure"},
    {"garbage", R"({"cast": ["garbage"]})", "MiracastFailure"},
    {"huge_line", R"({"cast": ["HUGE"]})", "MiracastFailure"},
    {"size_out_of_range", R"({"cast": [{"playing": {"width": -1, "height": 1e9}}]})", "MiracastFailure"},
    {"step_too_long", R"({"cast": [{"step": {"text": "", "limit-ms": 120001}}]})", "MiracastFailure"},
    {"word_unknown", R"({"cast": [{"ended": {"why": "bored", "text": ""}}]})", "MiracastFailure"},
    {"id_of_no_type", R"({"cast": [{"playing": {"id": [], "width": 1, "height": 1}}]})", "MiracastFailure"},
};

INSTANTIATE_TEST_SUITE_P(Of, FailureTest, ::testing::ValuesIn(Failures),
    [](const auto &row) { return std::string(row.param.name); });

TEST_F(WirelessDisplayTest, LinesOfOtherKindsAndCastsAreIgnored)
{
    start();
    Client client;
    service.script(R"({"cast": [{"sang": {}}, {"ended": {"id": 1, "why": "lost", "text": ""}},
        {"paused": {}}, {"playing": {"id": 999, "width": 1, "height": 1}}, {"playing": {"width": 640, "height": 480}}]})");
    EXPECT_EQ(client.resultOf(Scan), "Success");
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "Success");
    EXPECT_EQ(client.miracast.devicePixelSize(), QSize(640, 480));
    EXPECT_EQ(client.miracast.displayState(), MiracastDisplayState::Playing);
}

TEST_F(ExtendingTest, AStepMayTakeAsLongAsItSays)
{
    start();
    Client client;
    EXPECT_EQ(client.resultOf(Scan), "Success");
    (void)service.heard();
    service.script(R"({"cast": [{"step": {"text": "waiting for a person", "limit-ms": 120000}}]})");
    client.ask(connectTo(Sink));
    EXPECT_TRUE(waitUntil([] { return sourceOf("miracast").endsWith("; 10.0.0.2: waiting for a person"); }));
    EXPECT_TRUE(service.heard().value(0).contains(R"("picture":"further-output")"));
    EXPECT_FALSE(waitUntil([&] { return !client.completions().isEmpty(); }, 1500)) << "others have 1.1 s";
    service.script(R"({"now": [{"playing": {"width": 1280, "height": 720}}]})");
    EXPECT_TRUE(waitUntil([&] { return client.completions() == QStringList("connect Success"); }));
}

TEST_F(WirelessDisplayTest, WhatWaitsIsCancelledWithinASecondEvenIfNothingAnswers)
{
    start();
    Client client;
    EXPECT_EQ(client.resultOf(Scan), "Success");
    const auto askBoth = [&] {
        client.ask(connectTo(Sink));
        EXPECT_TRUE(waitUntil([&] { return client.miracast.connectionState() == State::Connecting; }));
        client.heard.take();
        QElapsedTimer time;
        time.start();
        client.ask(Disconnect);
        QStringList completed;
        EXPECT_TRUE(waitUntil([&] { return (completed += client.completions()).size() == 2; }));
        EXPECT_EQ(completed, (QStringList{"connect RequestCancelled", "disconnect Success"}));
        return time.elapsed();
    };
    service.script(R"({"cast": [{"step": {"text": "waiting"}}]})");
    (void)askBoth();
    const pid_t caster = service.caster();
    service.script(R"({"cast": [{"step": {"text": "waiting"}}], "end": [], "pause": []})");
    EXPECT_LT(askBoth(), 5000);
    EXPECT_NE(::kill(caster, 0), 0) << "it was ended";
    service.script(R"({"pause": []})");
    (void)awaitSource("known: the X server");
    EXPECT_TRUE(waitUntil([&] { return client.resultOf(connectTo(Sink)) == "Success"; }));
    client.heard.take();
    client.ask(Pause);
    EXPECT_EQ(client.resultOf(Resume), "InvalidRequest");
    EXPECT_TRUE(client.after(Disconnect).endsWith("pauseCompleted(RequestCancelled)"));
}

TEST_F(WirelessDisplayTest, AServiceThatIsShutDownStartsWithTheNextScan)
{
    start();
    Client client;
    EXPECT_EQ(client.resultOf(Scan), "Success");
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "Success");
    client.heard.take();
    EXPECT_EQ(
        client.after(Shutdown), Ended + "stopReason(Application) status(Stopped) shutdownCompleted(Success)");
    daemon.kill();
    daemon.waitForFinished();
    startDaemon();
    EXPECT_EQ(client.heard.settled(), "");
    EXPECT_EQ(client.resultOf(Disconnect), "InvalidRequest");
    EXPECT_TRUE(client.after(Scan).startsWith("stopReason(NotStopped) status(Running) deviceDiscovered"));
}

TEST_F(WirelessDisplayTest, ASessionEndsWithTheDaemonWhoseSinksRemain)
{
    start();
    Client client;
    EXPECT_EQ(client.resultOf(Scan), "Success");
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "Success");
    client.heard.take();
    const pid_t caster = service.caster();
    service.script(R"({"hello": null})"); // the next one does not begin yet
    daemon.kill();
    daemon.waitForFinished();
    EXPECT_TRUE(waitUntil([&] { return ::kill(caster, 0) != 0; }));
    startDaemon();
    EXPECT_TRUE(waitUntil([&] { return client.miracast.connectionState() == State::Disconnected; }));
    EXPECT_TRUE(client.heard.take().contains("deviceDisconnected()"));
    EXPECT_TRUE(client.miracast.isSupported());
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "MiracastFailure");
    service.script("{}");
    (void)awaitSource("known: the X server");
    EXPECT_EQ(client.resultOf(connectTo(Sink)), "Success");
}

TEST_F(WirelessDisplayTest, DoctorTellsWhatOzcastIsLike)
{
    start();
    const std::tuple<const char *, const char *> rows[] = {
        {R"({"hello": {"capture": "", "capture-remark": "neither X nor Wayland"}})",
            "known: there is no screen to cast: neither X nor Wayland; x264enc"},
        {R"({"hello": {"audio": ""}})", "known: the X server :0; x264enc without sound"},
        {R"({"hello": {"missing": "mpegtsmux of gstreamer1.0-plugins-bad"}})",
            "known: the screen cannot be cast: mpegtsmux of gstreamer1.0-plugins-bad"},
        {R"({"hello": {"version": 2}})",
            "absent: ozcast is not understood: it speaks version 2; install ozcast and ozdeviced of one "
            "release"},
    };
    Client client;
    for (const auto &[script, expected] : rows) {
        service.script(script);
        EXPECT_TRUE(waitUntil([&, text = expected] { return sourceOf("miracast").startsWith(text); }))
            << sourceOf("miracast").toStdString();
        if (QString(expected).contains("no screen")) {
            EXPECT_EQ(client.resultOf(Scan), "Success");
            EXPECT_EQ(client.resultOf(connectTo(Sink)), "MiracastFailure");
        }
    }
    EXPECT_FALSE(client.miracast.isSupported());
}

TEST_F(SeatTest, OnlyTheActiveSessionOfTheSeatIsCast)
{
    start();
    const QString absent = "absent: nobody's screen can be cast: no session has started ozcast";
    EXPECT_EQ(awaitSource(absent).left(absent.size()), absent);
    root.setMode("/", 0755);
    constexpr int nobody = 65534;
    if (::geteuid() == 0) {
        Process stranger;
        service.runCaster(&stranger, root.file(""), true);
        stranger.awaitEnd();
        EXPECT_EQ(stranger.exitCode(), 4) << stranger.errors().toStdString();
        service.login(nobody);
        Process theirs;
        EXPECT_TRUE(waitUntil([&] {
            if (theirs.state() == QProcess::NotRunning)
                service.runCaster(&theirs, root.file(""), true);
            return sourceOf("miracast").startsWith("known");
        }));
        service.login(1000); // somebody else's session is the active one now
        theirs.awaitEnd();
        EXPECT_EQ(awaitSource("absent"), absent);
    }
    Process own;
    service.runCaster(&own, root.file(""), false);
    (void)awaitSource("known");
    Process second;
    service.runCaster(&second, root.file(""), false);
    second.awaitEnd();
    EXPECT_EQ(second.exitCode(), 4);
    EXPECT_EQ(Client().resultOf(Scan), "Success");
}

TEST_F(WirelessDisplayTest, WrongOptionsKeepTheDaemonFromStarting)
{
    const std::pair<const char *, const char *> rows[] = {
        {"sink=tv", "sink=tv is not an address such as 192.168.1.7 or 192.168.1.7:7250"},
        {"sink=10.0.0.2:0", "sink=10.0.0.2:0 is not a port from 1 to 65535"},
        {"sink=10.0.0.2,10.0.0.2:99", "sink=10.0.0.2:99 is not named once"},
        {"mdns=maybe", "mdns=maybe is not on or off"},
        {"extend=1", "extend=1 is not on or off"},
        {"port=554", "port=554 is not a port from 1024 to 65535"},
        {"connect-seconds=nan", "connect-seconds=nan is not a time from 0.1 to 300 seconds"},
    };
    for (const auto &[option, problem] : rows) {
        Process wrong;
        wrong.run(OZ_DAEMON,
            {"--config", "/dev/null", "--simulated", "--source",
                QString("miracast=wireless-display ") + option});
        wrong.awaitEnd();
        EXPECT_EQ(wrong.errors(), QString("ozdeviced: miracast = wireless-display: %1").arg(problem));
        EXPECT_EQ(wrong.exitCode(), 1);
    }
}

} // namespace
