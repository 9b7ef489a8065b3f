// Requests that do not wait, over a simulated phone.

#include "harness/ControlService.hpp"
#include "services/Services.hpp"

#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/WiFiDirect.hpp>
#include <oz/models/DeviceRequest.hpp>
#include <oz/models/DeviceRequests.hpp>

#include <QSignalSpy>

#include <csignal>

using namespace oz;
using namespace oz::device;
using namespace oz::models;
using namespace oz::harness;

namespace {

const QString Tv = "02:00:00:00:01:01";
const QString Sink = "02:00:00:00:02:01";
const QString SinkWithPin = "02:00:00:00:02:02";

QString outcome(const QFuture<RequestResult> &future)
{
    DeviceRequest request(future);
    EXPECT_TRUE(waitUntil([&] { return !request.isRunning(); }));
    return request.hasSucceeded() ? "done" : request.reason();
}

CellularConnectionState::Type stateNow(const QString &profile)
{
    return CellularDataInterface(profile).connectionState();
}

class RequestsTest : public ServicesTest
{
protected:
    explicit RequestsTest(
        const QByteArray &phone =
            R"({"wifi-direct": {"scan-seconds": 0.05, "connect-seconds": 0.05}, "led": {"on-seconds": 0.02, "off-seconds": 0.02},
                           "miracast": {"scan-seconds": 0.05, "connect-seconds": 0.05}})")
        : ServicesTest(phone)
    {
    }
    static QString valueOf(const QFuture<RequestResult> &future)
    {
        EXPECT_EQ(outcome(future), "done");
        return future.result().value;
    }
    void signalDaemon(int signal) const { EXPECT_EQ(::kill(pid_t(daemon.processId()), signal), 0); }

    DeviceRequests requests;
};

} // namespace

TEST_F(RequestsTest, EndWithTheClassResultAndItsName)
{
    EXPECT_EQ(outcome(requests.connectProfile("mms")), "done");
    EXPECT_EQ(outcome(requests.connectProfile("mms")), "NotPossible");
    EXPECT_EQ(outcome(requests.connectProfile("none")), "InvalidInterface");
    CellularDataInterface mms("mms");
    EXPECT_EQ(mms.connectionState(), CellularConnectionState::Connected);
    EXPECT_EQ(outcome(requests.disconnectProfile("mms")), "done");
    EXPECT_TRUE(waitUntil([&] { return mms.connectionState() == CellularConnectionState::Disconnected; }));
    sim("wifi-direct fail-next scan 16");
    EXPECT_EQ(outcome(requests.scanPeers()), "Busy");
    EXPECT_EQ(outcome(requests.cancelPeer()), "NoRequestToCancel");
    WiFiDirect wifi;
    EXPECT_EQ(outcome(requests.scanPeers()), "done");
    EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices().contains(Tv); }));
    const auto method = WiFiDirectWpsMethod::RandomPin;
    EXPECT_EQ(outcome(requests.startPeerSession()), "NoNetworkConnection");
    EXPECT_EQ(outcome(requests.peerIpAddress(Tv)), "DeviceNotFound");
    EXPECT_EQ(log.take(), QStringList{"WiFiDirect: Device not not connected to network. ( 64 )"});
    EXPECT_EQ(
        outcome(requests.connectPeer(Tv, WiFiDirectIntent::Any, method, "12345678")), "ConnectionFailed");
    EXPECT_EQ(outcome(requests.connectPeer(Tv, WiFiDirectIntent::Any, method, "12345670")), "done");
    EXPECT_EQ(WiFiDirect().connectedDevices(), QStringList{Tv});
    EXPECT_EQ(valueOf(requests.peerIpAddress(Tv)), wifi.networkOwnerIpAddress());
    const QString session = valueOf(requests.startPeerSession());
    EXPECT_NE(session, QString());
    EXPECT_EQ(outcome(requests.stopPeerSession("none")), "InvalidSession");
    EXPECT_EQ(outcome(requests.stopPeerSession(session)), "done");
    EXPECT_EQ(outcome(requests.scanSinks()), "done");
    EXPECT_EQ(outcome(requests.connectSink(SinkWithPin, "")), "PinRequired");
    EXPECT_EQ(outcome(requests.connectSink(Sink, "")), "done");
    MiracastManager manager;
    EXPECT_EQ(outcome(requests.pauseSink()), "done");
    EXPECT_TRUE(waitUntil([&] { return manager.displayState() == MiracastDisplayState::Paused; }));
    EXPECT_EQ(outcome(requests.resumeSink()), "done");
    EXPECT_TRUE(waitUntil([&] { return manager.displayState() == MiracastDisplayState::Playing; }));
    EXPECT_EQ(outcome(requests.disconnectSink()), "done");
    EXPECT_EQ(outcome(requests.shutDownMiracast()), "done");
    EXPECT_TRUE(waitUntil([&] { return manager.status() == MiracastStatus::Stopped; }));
    EXPECT_EQ(outcome(requests.flash(LedColor::Blue, 2)), "done");
    EXPECT_EQ(outcome(requests.vibrate(10)), "done");
    sim("vibration present off");
    EXPECT_EQ(outcome(requests.vibrate(10)), "NotSupported");
}

TEST_F(RequestsTest, AreUndoneIfCancelled)
{
    sim("data-profile mms answer-late 200");
    QFuture<RequestResult> slow = requests.connectProfile("mms");
    QFuture<RequestResult> behind = requests.connectProfile("mms");
    EXPECT_TRUE(waitUntil([&] { return slow.progressValue() == 1; }));
    slow.cancel();
    behind.cancel();
    EXPECT_TRUE(waitUntil([&] { return slow.isFinished() && behind.isFinished(); }));
    EXPECT_EQ(slow.resultCount() + behind.resultCount(), 0);
    EXPECT_EQ(outcome(requests.disconnectProfile("mms")), "NotPossible"); // there is none

    QFuture<RequestResult> flashes = requests.flash(LedColor::Red, -1);
    const auto lit = [] { return attributesOf("/pps/services/led/status"); };
    const QVariantMap dark = lit();
    EXPECT_TRUE(waitUntil([&] { return lit() != dark; }));
    flashes.cancel();
    EXPECT_TRUE(waitUntil([&] { return flashes.isFinished(); }));
    EXPECT_EQ(outcome(requests.flash(LedColor::Blue, 1)), "done");
}

TEST_F(RequestsTest, ToASilentServiceDelayOnlyRequestsToTheSameService)
{
    signalDaemon(SIGSTOP);
    auto own = std::make_unique<DeviceRequests>();
    DeviceRequest profile(own->connectProfile("mms"));
    const QFuture<RequestResult> scan = own->scanPeers();
    DeviceRequest peers(scan);
    QSignalSpy finished(&profile, &DeviceRequest::finished);
    settle();
    EXPECT_TRUE(profile.isRunning() && peers.isRunning());
    profile.cancel();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(profile.reason(), "Cancelled");
    own.reset();
    EXPECT_FALSE(scan.isFinished()) << "destroying the requests waited for the answer";
    signalDaemon(SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return !peers.isRunning(); }));
    EXPECT_EQ(outcome(requests.connectProfile("mms")), "done");
    EXPECT_EQ(outcome(requests.disconnectProfile("mms")), "done");
}

TEST_F(RequestsTest, ReportTheServiceErrorWithTheResult)
{
    sim("data-profile mms enabled off");
    const struct
    {
        QFuture<RequestResult> request;
        RequestResult expected;
    } rows[] = {
        {requests.connectProfile("mms"),
            {false, CellularConnectionRequestResult::InternalError, "InternalError", {}, ENODEV,
                "this profile is not enabled"}},
        {requests.connectProfile("none"),
            {false, CellularConnectionRequestResult::InvalidInterface, "InvalidInterface", {}, ENOENT,
                "No such file or directory"}},
        {requests.disconnectProfile("mms"), // is not sent
            {false, CellularConnectionRequestResult::NotPossible, "NotPossible"}},
        {requests.startPeerSession(),
            {false, WiFiDirectResult::NoNetworkConnection, "NoNetworkConnection", {}, ENONET,
                "there is no connection"}},
        {requests.stopPeerSession("none"),
            {false, WiFiDirectResult::NoNetworkConnection, "NoNetworkConnection", {}, ENONET,
                "there is no connection"}},
        {requests.scanPeers(), {true, WiFiDirectResult::Success, {}}},
    };
    for (const auto &row : rows) {
        DeviceRequest request(row.request);
        EXPECT_TRUE(waitUntil([&] { return !request.isRunning(); }));
        EXPECT_TRUE(row.request.result() == row.expected) << row.expected.reason.toStdString();
        EXPECT_EQ(request.errorNumber(), row.expected.errorNumber);
        EXPECT_EQ(request.errorString(), row.expected.errorString);
    }
}

TEST_F(RequestsTest, FlashRefusesNoneAndUnknownColors)
{
    for (const auto &[color, found] :
        {std::pair(LedColor::None, "None"), std::pair(LedColor::Type(0xABC), "0x000abc")}) {
        const QFuture<RequestResult> flashes = requests.flash(color, 3);
        EXPECT_EQ(outcome(flashes), "InvalidArgument");
        const QString problem =
            QString("flash(color, count): color is %1, expected an enumerator of LedColor "
                    "other than None")
                .arg(found);
        EXPECT_EQ(flashes.result().errorNumber, EINVAL);
        EXPECT_EQ(flashes.result().errorString, problem);
        EXPECT_EQ(log.take(), QStringList{problem});
    }
    requests.flash(LedColor::Blue, -1); // runs although the future is dropped
    EXPECT_TRUE(waitUntil([] { return attributesOf("/pps/services/led/status").value("blue") == "on"; }));
}

// Connections stay pending.
class ConnectingTest : public RequestsTest
{
protected:
    ConnectingTest()
        : RequestsTest(R"({"wifi-direct": {"scan-seconds": 0.05, "connect-seconds": 3600},
                           "data-profile": {"connect-seconds": 3600}})")
    {
    }
    void SetUp() override
    {
        RequestsTest::SetUp();
        EXPECT_EQ(outcome(requests.scanPeers()), "done");
        EXPECT_TRUE(waitUntil([] { return WiFiDirect().visibleDevices().contains(Tv); }));
    }
    QFuture<RequestResult> connectTv()
    {
        return requests.connectPeer(
            Tv, WiFiDirectIntent::Any, WiFiDirectWpsMethod::PushButtonConfiguration, {});
    }
    // Returns both requests once they are pending.
    std::pair<QFuture<RequestResult>, QFuture<RequestResult>> connectBoth()
    {
        const std::pair both(requests.connectProfile("mms"), connectTv());
        EXPECT_TRUE(waitUntil([] {
            return stateNow("mms") == CellularConnectionState::PendingConnect
                && WiFiDirect().connectionState() == WiFiDirectConnectionState::Connecting;
        }));
        EXPECT_EQ(outcome(requests.connectProfile("mms")), "NotPossible");
        EXPECT_EQ(outcome(requests.scanPeers()), "Busy");
        EXPECT_FALSE(both.first.isFinished() || both.second.isFinished());
        return both; // their threads have seen the pending state, as the calls above show
    }
    static bool isIdle()
    {
        return stateNow("mms") == CellularConnectionState::Disconnected
            && WiFiDirect().connectionState() == WiFiDirectConnectionState::Disconnected;
    }
};

TEST_F(ConnectingTest, EndsWithTheOppositeRequestOrTheConnection)
{
    auto [profile, peer] = connectBoth();
    CellularDataInterface another("mms");
    EXPECT_EQ(another.requestConnect(), CellularConnectionRequestResult::Requested); // keeps it pending
    EXPECT_EQ(outcome(requests.disconnectProfile("mms")), "done");
    EXPECT_EQ(outcome(requests.cancelPeer()), "done");
    EXPECT_EQ(outcome(profile), "ConnectionFailed");
    EXPECT_EQ(outcome(peer), "ConnectionFailed");

    another.requestDisconnect();
    for (int i = 0; i < 2; ++i) { // a failed attempt does not prevent the next one
        std::tie(profile, peer) = connectBoth();
        sim("data-profile mms drop");
        sim("wifi-direct peer-goes tv");
        EXPECT_EQ(outcome(profile), "ConnectionFailed");
        EXPECT_EQ(outcome(peer), "ConnectionFailed");
        sim("wifi-direct sight tv");
    }
}

TEST_F(ConnectingTest, EndsIfCancelled)
{
    auto [profile, peer] = connectBoth();
    profile.cancel();
    peer.cancel();
    EXPECT_TRUE(waitUntil(isIdle));
}

TEST_F(ConnectingTest, CancelsAtOnceAndUndoesWhatASilentServiceDoesLater)
{
    signalDaemon(SIGSTOP);
    QFuture<RequestResult> cancelled[] = {requests.connectProfile("mms"), connectTv(),
        requests.startPeerSession() /* waits for the one before */};
    EXPECT_TRUE(waitUntil([&] { return cancelled[0].progressValue() + cancelled[1].progressValue() == 2; }));
    int cancellations = 0;
    QObject context;
    for (QFuture<RequestResult> &future : cancelled) {
        future.onCanceled(&context, [&] {
            ++cancellations;
            return RequestResult();
        });
        future.cancel();
    }
    EXPECT_TRUE(waitUntil([&] { return cancellations == 3; }));
    signalDaemon(SIGCONT);
    EXPECT_EQ(outcome(requests.disconnectProfile("mms")), "NotPossible");
    EXPECT_EQ(outcome(requests.cancelPeer()), "NoRequestToCancel");
    EXPECT_TRUE(isIdle());
}

// A service that answers; the test publishes the states.
class ProfileRequestTest : public DeviceTest
{
protected:
    enum State { Idle, Pending, Connected };

    void publish(State state) const
    {
        root.place("/pps/services/cds/cnice/status",
            QByteArray("@status\nweb:json:{\"enabled\":true,\"active\":") + (state != Idle ? "true" : "false")
                + ",\"connected\":" + (state == Connected ? "true" : "false") + "}\n");
    }

    ControlService service{
        "/pps/services/cds/cnice/web_control", ControlService::answer("dat:json:{\"connect_id\":\"c7\"}\n")};
};

TEST_F(ProfileRequestTest, EndsWithTheStateThatFollowsTheAnswer)
{
    const struct
    {
        QList<State> states; // after the answer; idle before it
        const char *outcome;
        const char *disconnecting; // a failed connection is no longer held
    } rows[] = {
        {{Connected}, "done", "done"},
        {{Pending, Connected}, "done", "done"},
        {{}, "ConnectionFailed", "NotPossible"},
    };
    for (const auto &row : rows) {
        publish(Idle);
        if (row.states.isEmpty())
            qputenv("OZ_GRACE_TIME", "0.2");
        DeviceRequests requests;
        const QFuture<RequestResult> connecting = requests.connectProfile("web");
        EXPECT_TRUE(waitUntil([&] { return !service.take().isEmpty(); }));
        for (const State state : row.states) {
            settle();
            EXPECT_FALSE(connecting.isFinished());
            publish(state);
        }
        EXPECT_EQ(outcome(connecting), row.outcome);
        EXPECT_EQ(outcome(requests.disconnectProfile("web")), row.disconnecting);
        service.take();
    }
    qunsetenv("OZ_GRACE_TIME");
}

TEST_F(ProfileRequestTest, ConnectsAgainAfterTheConnectionEnded)
{
    publish(Connected);
    DeviceRequests requests;
    EXPECT_EQ(outcome(requests.connectProfile("web")), "done");
    EXPECT_EQ(outcome(requests.connectProfile("web")), "NotPossible");
    publish(Idle);
    const QFuture<RequestResult> again = requests.connectProfile("web");
    QStringList asked;
    EXPECT_TRUE(waitUntil([&] {
        for (const QVariantMap &request : service.take())
            asked += request.value("msg").toString();
        return asked.size() == 3;
    }));
    EXPECT_EQ(asked, (QStringList{"connect", "disconnect", "connect"}));
    publish(Connected);
    EXPECT_EQ(outcome(again), "done");
    EXPECT_EQ(outcome(requests.disconnectProfile("web")), "done");
}
