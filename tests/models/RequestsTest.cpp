// Requests that do not wait, over a simulated phone.

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
using namespace oz::testing;

namespace {

const QString Tv = "02:00:00:00:01:01";
const QString Sink = "02:00:00:00:02:01";
const QString SinkWithPin = "02:00:00:00:02:02";

class RequestsTest : public ServicesTest
{
protected:
    RequestsTest()
        : ServicesTest(
            R"({"wifi-direct": {"scan-seconds": 0.05, "connect-seconds": 0.05}, "led": {"on-seconds": 0.02, "off-seconds": 0.02},
                           "miracast": {"scan-seconds": 0.05, "connect-seconds": 0.05}})")
    {
    }
    static QString outcome(const QFuture<RequestResult> &future)
    {
        DeviceRequest request(future);
        EXPECT_TRUE(waitUntil([&] { return !request.isRunning(); }));
        return request.hasSucceeded() ? "done" : request.reason();
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

TEST_F(RequestsTest, EndWithTheResultOfTheClassAndItsName)
{
    EXPECT_EQ(outcome(requests.connectProfile("mms")), "done");
    EXPECT_EQ(outcome(requests.connectProfile("mms")), "NotPossible");
    EXPECT_EQ(outcome(requests.connectProfile("none")), "InvalidInterface");
    CellularDataInterface mms("mms");
    EXPECT_TRUE(waitUntil([&] { return mms.connectionState() == CellularConnectionState::Connected; }));
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
    EXPECT_EQ(outcome(requests.connectPeer(Tv, WiFiDirectIntent::Any, method, "12345670")), "done");
    EXPECT_TRUE(waitUntil([&] { return wifi.connectedDevices().contains(Tv); }));
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

TEST_F(RequestsTest, WhatIsCancelledIsTakenBack)
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

TEST_F(RequestsTest, ASilentServiceHoldsUpNobodyButThoseWhoAskIt)
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
    EXPECT_FALSE(scan.isFinished()) << "nobody waits for its answer";
    signalDaemon(SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return !peers.isRunning(); }));
    EXPECT_EQ(outcome(requests.connectProfile("mms")), "done");
    EXPECT_EQ(outcome(requests.disconnectProfile("mms")), "done");
}
