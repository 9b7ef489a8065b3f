// The simulated wireless displays as applications have them.

#include "services/MiracastClient.hpp"
#include "services/Services.hpp"

#include <oz/device/DisplayInfo.hpp>

#include <QElapsedTimer>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using Client = MiracastClient;
using State = MiracastConnectionState;

const QString Control = "/pps/services/miracast/control";
const QString Tv = "02:00:00:00:02:01";
const QString Projector = "02:00:00:00:02:02";
const QString SetTopBox = "02:00:00:00:02:03";
const QString Monitor = "02:00:00:00:02:04";

class MiracastServiceTest : public ServicesTest
{
protected:
    MiracastServiceTest() : ServicesTest(R"({"miracast": {"scan-seconds": 0.1, "connect-seconds": 0.1}})") { }
};

TEST_F(MiracastServiceTest, ASessionShowsFromTheScanToItsEnd)
{
    Client client;
    const MiracastManager &miracast = client.miracast;
    EXPECT_EQ(client.after(Scan),
        "deviceDiscovered(\"Living room\", \"02:00:00:00:02:01\", Display, Television) "
        "deviceDiscovered(\"Meeting room\", \"02:00:00:00:02:02\", Display, Projector) "
        "deviceDiscovered(\"Set-top box\", \"02:00:00:00:02:03\", Multimedia, SetTopBox) "
        "scanCompleted(Success)");
    EXPECT_EQ(client.after(connectTo(Tv)),
        "deviceName(\"Living room\") hardwareAddress(\"02:00:00:00:02:01\") deviceType(Display, Television) "
        "connectionState(Connecting) connectionState(Connected) "
        "deviceConnected(\"Living room\", \"02:00:00:00:02:01\", Display, Television) displayState(Playing) "
        "sessionId(ID) devicePixelSize(1920x1080) connectCompleted(Success)");
    const DisplayInfo display(2);
    EXPECT_TRUE(display.isWireless());
    EXPECT_EQ(display.displayName(), "miracast-Living room");
    EXPECT_EQ(display.pixelSize(), QSize(1920, 1080));
    EXPECT_EQ(client.after(Pause), "displayState(Paused) pauseCompleted(Success)");
    EXPECT_EQ(client.after(Pause), "pauseCompleted(InvalidRequest)");
    EXPECT_EQ(client.after(Resume), "displayState(Playing) resumeCompleted(Success)");
    EXPECT_EQ(client.resultOf(connectTo(Projector)), "InvalidRequest");
    sim("display resize 2 640 480");
    EXPECT_TRUE(waitUntil([&] { return miracast.devicePixelSize() == QSize(640, 480); }));
    client.heard.take();
    const QString ended = "deviceName(\"\") hardwareAddress(\"\") deviceType(Unknown, Unknown) "
                          "connectionState(Disconnected) deviceDisconnected() displayState(Stopped) "
                          "sessionId(\"\") devicePixelSize(0x0) ";
    EXPECT_EQ(client.after(Disconnect), ended + "disconnectCompleted(Success)");
    EXPECT_TRUE(waitUntil([&] { return !display.isAttached(); }));

    for (const char *order : {"miracast sink-goes tv", "display remove 2"}) {
        EXPECT_EQ(client.resultOf(connectTo(Tv.toLower())), "Success");
        EXPECT_EQ(miracast.connectionState(), State::Connected);
        sim(order);
        EXPECT_TRUE(waitUntil([&] { return miracast.connectionState() == State::Disconnected; }));
        sim("miracast sink-appears tv");
        EXPECT_EQ(client.resultOf(Disconnect), "InvalidRequest");
    }
    client.heard.take();
    client.miracast.setProperty("miracast_name", "Gallery");
    client.miracast.setProperty("miracast_persistent", 1);
    client.miracast.warmup();
    EXPECT_EQ(client.after(Shutdown), "stopReason(Application) status(Stopped) shutdownCompleted(Success)");
    EXPECT_EQ(attributesOf("/pps/services/miracast/status").value("app_context"),
        (QVariantMap{{"name", "Gallery"}, {"persistent", true}}));
    sim("miracast sink-goes projector");
    EXPECT_TRUE(client.after(Scan).startsWith("stopReason(NotStopped) status(Running) deviceDiscovered"));
    EXPECT_EQ(client.resultOf(connectTo(Projector)), "DeviceNotFound");
}

TEST_F(MiracastServiceTest, ARequestFailsForAReasonOfTheSinkTheServiceOrAnotherRequest)
{
    Client client;
    EXPECT_EQ(client.resultOf(connectTo(Tv)), "DeviceNotFound") << "before the first scan";
    sim("miracast sink-appears monitor");
    EXPECT_EQ(client.resultOf(Scan), "Success");
    const std::tuple<const char *, Request, QString> rows[] = {
        {"", connectTo(Projector), "PinRequired"},
        {"", connectTo(Projector, "1234567"), "PinIncorrect"},
        {"", connectTo(SetTopBox), "ConnectionFailed"},
        {"", connectTo(Projector, "\"\n\",\"x\":\""), "InvalidRequest"},
        {"", connectTo(Projector, "12345670\nid::other"), "InvalidRequest"},
        {"miracast sink-goes monitor", connectTo(Monitor), "ConnectionFailed"},
        {"", connectTo(QString(4096, 'x')), "DeviceNotFound"},
        {"miracast stop 5", Scan, "DisabledByPolicy"},
        {"miracast stop 6", connectTo(Tv), "WiFiFailure"},
        {"miracast stop 1", Disconnect, "MiracastFailure"},
        {"miracast start", connectTo(Projector, "12345670"), "Success"},
    };
    for (const auto &[order, request, result] : rows) {
        if (*order)
            sim(order);
        EXPECT_EQ(client.resultOf(request), result) << order;
    }
    EXPECT_EQ(log.take(),
        (QStringList{
            "MiracastManager:  Connection Code ( -1003 )", "MiracastManager:  Connection Code ( -1002 )"}));
    EXPECT_EQ(client.resultOf(Disconnect), "Success");
    client.heard.take();
    client.ask(connectTo(Tv));
    EXPECT_TRUE(waitUntil([&] { return client.miracast.connectionState() == State::Connecting; }));
    client.ask(Disconnect);
    client.ask(Scan);
    sim("miracast stop 9");
    EXPECT_TRUE(waitUntil([&] { return client.miracast.stopReason() == MiracastStopReason::P2PFailure; }));
    QStringList completed;
    EXPECT_TRUE(waitUntil([&] { return (completed += client.completions()).size() == 3; }));
    EXPECT_EQ(completed, (QStringList{"connect RequestCancelled", "disconnect Success", "scan WiFiFailure"}));
}

TEST_F(MiracastServiceTest, EachErrorOfEachRequestCanBeArranged)
{
    Client client;
    const std::tuple<const char *, Request, QString> rows[] = {{"scan -1008", Scan, "WiFiFailure"},
        {"connect -1012", connectTo(Tv), "DisabledByPolicy"},
        {"disconnect -1010", Disconnect, "MiracastFailure"}, {"pause -1007", Pause, "RequestCancelled"},
        {"resume -1006", Resume, "InternalError"}, {"shutdown -1000", Shutdown, "PinRequired"}};
    for (const auto &[order, request, result] : rows) {
        sim(QString("miracast fail-next ") + order);
        EXPECT_EQ(client.resultOf(request), result) << order;
    }
    EXPECT_EQ(log.take(), QStringList{"MiracastManager:  Error Code ( -1006 )"});
    sim("miracast never-answer");
    client.ask(Pause);
    sim("miracast answer-late 300");
    QElapsedTimer late;
    late.start();
    EXPECT_EQ(client.resultOf(Resume), "InvalidRequest");
    EXPECT_GE(late.elapsed(), 300);
    EXPECT_EQ(client.completions(), QStringList());
}

TEST_F(MiracastServiceTest, AMalformedRequestIsAnsweredWhereItCanBeAndHarmsNobody)
{
    const QByteArray nobodys[] = {"rubbish", "", "msg::miracast_shutdown\n", "id::x\n",
        "msg::miracast_shutdown\nid::" + QByteArray(300, 'x') + "\n", QByteArray(100'000, '\xff')};
    ControlClient control(Control);
    for (const QByteArray &message : nobodys) {
        EXPECT_EQ(control.write(message), !message.isEmpty()) << "the connection has no empty messages";
        if (message.isEmpty())
            continue;
        QByteArray answer;
        EXPECT_TRUE(waitUntil([&] { return !(answer = control.read()).isEmpty(); }));
        EXPECT_TRUE(answer.contains("err:n:22\n")) << message.left(30).toStdString();
    }
    PpsObject status("/pps/services/miracast/status");
    ASSERT_TRUE(status.open(PpsOpenMode::Subscribe));
    int number = 0;
    for (const QByteArray message : {"msg::miracast_fly\n", "msg::miracast_session_start\n",
             "msg::miracast_session_start\ndat:json:{\"sink_mac\":1,\"pin\":\"\"}\n",
             "msg::miracast_session_pause\nrubbish\n", "msg::miracast_app_context\ndat::x\n"}) {
        const QByteArray id = "id::" + QByteArray::number(++number) + "\n";
        EXPECT_TRUE(control.write(id + message));
        EXPECT_TRUE(waitUntil([&] { return status.read().contains("last_request_" + id); }));
        EXPECT_TRUE(status.read().contains("last_request_err:n:-1005\n")) << message.toStdString();
    }
    EXPECT_EQ(Client().resultOf(Scan), "Success");
}

TEST_F(MiracastServiceTest, AFloodOfRequestsKeepsNobodyElseWaiting)
{
    Client flood;
    EXPECT_EQ(flood.resultOf(Pause), "InvalidRequest");
    const auto before = openDescriptors(daemon.processId());
    for (int i = 0; i < 200; ++i)
        flood.ask(Pause);
    daemon.setReadChannel(QProcess::StandardError);
    EXPECT_TRUE(waitUntil([&] { return daemon.peek(1000).contains("has too many miracast requests"); }));
    daemon.readAllStandardError();
    EXPECT_EQ(runWithoutPrivileges([] { return Client().resultOf(Resume) == "InvalidRequest" ? 0 : 1; }), 0);
    EXPECT_TRUE(waitUntil([&] { return openDescriptors(daemon.processId()) <= before; }));
}

} // namespace
