#include "services/Services.hpp"

#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <csignal>

// Applications that are in the midst of something when the daemon is killed, and started again.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

class RestartTest : public ServicesTest
{
protected:
    RestartTest()
        : ServicesTest(
            R"({"data-profile": {"connect-seconds": 0.01}, "led": {"on-seconds": 0.05, "off-seconds": 0.05},
            "wifi-direct": {"scan-seconds": 0.05, "connect-seconds": 0.05},
            "miracast": {"scan-seconds": 0.05, "connect-seconds": 0.05}})")
    {
    }

    void restart()
    {
        daemon.kill();
        daemon.waitForFinished();
        start();
    }
};

TEST_F(RestartTest, AProfileThatWasConnectedStaysSoAndCanBeDisconnected)
{
    CellularDataInterface mms("mms");
    ASSERT_EQ(mms.requestConnect(), CellularConnectionRequestResult::Requested);
    ASSERT_TRUE(waitUntil([&] { return mms.connectionState() == CellularConnectionState::Connected; }));
    SignalLog heard(&mms);
    restart();
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(mms.requestDisconnect(), CellularConnectionRequestResult::Requested);
    EXPECT_EQ(heard.waitFor(2).left(29), "connectionState(Disconnected)");
}

TEST_F(RestartTest, ALedThatFlashesGoesOnAndEnds)
{
    Led led;
    led.flash(6);
    const auto flashes = [] { return attributesOf("/pps/services/led/activity").value("flashes").toInt(); };
    ASSERT_TRUE(waitUntil([&] { return flashes() >= 2; }));
    restart();
    EXPECT_TRUE(led.isActive());
    EXPECT_TRUE(waitUntil([&] { return !led.isActive(); }));
    led.flash(1);
    EXPECT_TRUE(waitUntil([&] { return !led.isActive(); }));
}

TEST_F(RestartTest, ALedThatFlashesUntilItIsCancelledIsCancelledAfterwards)
{
    Led led;
    led.flash(-1);
    const auto requests = [] {
        return attributesOf("/pps/services/led/activity").value("requests").toList();
    };
    ASSERT_TRUE(waitUntil([&] { return requests().size() == 1; }));
    restart();
    EXPECT_EQ(requests().size(), 1);
    led.cancel();
    EXPECT_TRUE(waitUntil([&] { return requests().isEmpty(); }));
}

TEST_F(RestartTest, AFlashWhoseClientDoesNotComeBackEnds)
{
    EXPECT_EQ(runWithoutPrivileges([] {
        PpsObject control("/pps/services/led/control");
        return control.open(PpsOpenMode::PublishSubscribe)
                && control.write("msg::requestLED\nid::1\ndat:json:{\"color\":\"red\",\"blinkCount\":-1}\n")
            ? 0
            : 1;
    }),
        0);
    restart();
    EXPECT_TRUE(waitUntil(
        [] { return attributesOf("/pps/services/led/activity").value("requests").toList().isEmpty(); }));
}

TEST_F(RestartTest, AGroupAndItsSessionStay)
{
    WiFiDirect wifi;
    ASSERT_EQ(wifi.requestScan(), WiFiDirectResult::Success);
    ASSERT_TRUE(waitUntil([&] { return !wifi.isScanning() && wifi.lastUpdate().isValid(); }));
    ASSERT_EQ(
        ask("/pps/services/wifi_p2p/manager/control",
            {{"msg", "wifi_p2p_connect"},
                {"dat", QVariantMap{{"addr", "02:00:00:00:01:01"}, {"go_intent", "any"}, {"wps_method", 0}}}})
            .value("err"),
        QVariant());
    ASSERT_TRUE(waitUntil([&] { return wifi.connectionState() == WiFiDirectConnectionState::Connected; }));
    const QString session = ask("/pps/services/wifi_p2p/manager/control", {{"msg", "wifi_p2p_start_session"}})
                                .value("dat")
                                .toMap()
                                .value("session_key")
                                .toString();
    const QString values = valuesOf(wifi);
    SignalLog heard(&wifi);
    restart();
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(valuesOf(wifi), values);
    EXPECT_EQ(wifi.requestStopSession(session), WiFiDirectResult::Success);
    EXPECT_TRUE(waitUntil([&] { return wifi.connectionState() == WiFiDirectConnectionState::Disconnected; }));
}

TEST_F(RestartTest, AGroupStaysWhatItIsWhoeverIsInIt)
{
    for (const char *group : {"group owner", "group client tv,laptop", "group owner laptop,tv"}) {
        sim(QString("wifi-direct ") + group);
        const WiFiDirect wifi;
        const QString values = valuesOf(wifi);
        const QVariantMap status = attributesOf("/pps/services/wifi_p2p/manager/status");
        restart();
        EXPECT_EQ(valuesOf(wifi), values) << group;
        EXPECT_EQ(attributesOf("/pps/services/wifi_p2p/manager/status"), status) << group;
    }
}

TEST_F(RestartTest, AMiracastSessionStays)
{
    MiracastManager manager;
    const auto request = [](const QByteArray &text) {
        PpsObject control("/pps/services/miracast/control");
        return control.open(PpsOpenMode::PublishSubscribe) && control.write(text);
    };
    ASSERT_TRUE(request("msg::miracast_sink_discover\nid::1\n"));
    ASSERT_TRUE(waitUntil([] { return !attributesOf("/pps/services/miracast/sinks").isEmpty(); }));
    ASSERT_TRUE(request(
        "msg::miracast_session_start\nid::2\ndat:json:{\"sink_mac\":\"02:00:00:00:02:01\",\"pin\":\"\"}\n"));
    ASSERT_TRUE(waitUntil([&] { return manager.connectionState() == MiracastConnectionState::Connected; }));
    settle();
    const QString values = valuesOf(manager);
    SignalLog heard(&manager);
    restart();
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(valuesOf(manager), values);
}

TEST_F(RestartTest, AFreshStartAndAnotherFileBeginAnew)
{
    const auto level = [] {
        return attributesOf("/pps/system/filesystem/removable/sdcard").value("mounted").toBool();
    };
    sim("sdcard unmount");
    restart();
    EXPECT_FALSE(level());
    daemon.kill();
    daemon.waitForFinished();
    start({"--fresh"});
    EXPECT_TRUE(level());
    sim("sdcard unmount");
    root.place("/phone.json", "{}");
    ::kill(pid_t(daemon.processId()), SIGHUP);
    EXPECT_TRUE(waitUntil(level)) << "and SIGHUP reads it";
    root.place("/phone.json", "{");
    ::kill(pid_t(daemon.processId()), SIGHUP);
    sim("sdcard unmount");
    EXPECT_FALSE(level()) << "a wrong one leaves everything as it was";
    EXPECT_TRUE(
        waitUntil([&] { return daemon.readAllStandardError().contains("everything goes on as it was"); }));
}

} // namespace
