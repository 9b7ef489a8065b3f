#include "services/Rigs.hpp"
#include "services/Services.hpp"

#include <oz/device/WiFiDirect.hpp>

// Wi-Fi Direct by wpa_supplicant, whose stand-in says what the real one was recorded to say.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using Intent = WiFiDirectIntent;
using Method = WiFiDirectWpsMethod;
using State = WiFiDirectConnectionState;

const QString Tv = "42:00:00:00:01:00";
const QString Laptop = "42:00:00:00:02:00";

class WpaSupplicantTest : public RigTest
{
protected:
    explicit WpaSupplicantTest(int graceTime = 2, const QStringList &arguments = {})
        : RigTest(std::make_unique<WpaSupplicantRig>(), graceTime), air(static_cast<WpaSupplicantRig &>(*rig))
    {
        rig->start();
        startDaemon(arguments);
        (void)air.asked();
    }

    void bring(const QString &address, const QString &group = {}) const
    {
        (void)air.happen("PeerComes",
            {address, address == Tv ? "TV" : "Laptop", address == Tv ? "000600111c440032" : "", group});
    }
    // Lets the phone find both peers, of which the laptop owns a group.
    void scan(const WiFiDirect &wifi) const
    {
        WiFiDirect asking;
        EXPECT_EQ(asking.requestScan(), WiFiDirectResult::Success);
        bring(Tv);
        bring(Laptop, "DIRECT-ab");
        (void)air.happen("FindEnds");
        EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices().size() == 2 && !wifi.isScanning(); }));
        (void)air.asked();
    }
    [[nodiscard]] static bool reaches(const WiFiDirect &wifi, State::Type state)
    {
        return waitUntil([&] { return wifi.connectionState() == state; });
    }
    void connectTv(WiFiDirect *wifi, const char *role) const
    {
        EXPECT_EQ(wifi->requestConnect(Tv, Intent::Any, Method::PushButtonConfiguration, ""),
            WiFiDirectResult::Success);
        (void)air.happen("GroupStarts", {role, Tv});
        EXPECT_TRUE(reaches(*wifi, State::Connected));
        (void)air.asked();
    }

    WpaSupplicantRig &air;
};

TEST_F(WpaSupplicantTest, ItTakesTheRadioUpAndFindsPeers)
{
    WiFiDirect wifi;
    EXPECT_TRUE(wifi.isEnabled());
    QStringList found;
    QObject::connect(&wifi,
        qOverload<QString, QString, WiFiDirectDeviceType::Type, WiFiDirectSecondaryDeviceType::Types,
            WiFiDirectRole::Type>(&WiFiDirect::deviceDiscovered),
        [&](const QString &name, const QString &address, auto type, auto secondary, auto role) {
            found.append(
                QStringLiteral("%1 %2 %3 %4 %5").arg(name, address).arg(type).arg(secondary).arg(role));
        });
    EXPECT_EQ(wifi.requestScan(), WiFiDirectResult::Success);
    EXPECT_EQ(wifi.requestScan(), WiFiDirectResult::Busy) << "though it takes another one";
    EXPECT_EQ(air.asked(), "find start_with_full 10");
    bring(Tv);
    bring(Laptop, "DIRECT-ab");
    EXPECT_TRUE(waitUntil([&] { return found.size() == 2; }));
    EXPECT_EQ(found, (QStringList{"TV " + Tv + " 7 2 3", "Laptop " + Laptop + " 7 1 1"}));
    EXPECT_TRUE(wifi.isScanning());
    (void)air.happen("PeerGoes", {Tv}); // during the scan, so it is not there
    EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices() == QStringList{Laptop}; }));
    (void)air.happen("FindEnds");
    EXPECT_TRUE(waitUntil([&] { return !wifi.isScanning(); }));
    const QVariantMap status = attributesOf("/pps/services/wifi_p2p/manager/status");
    const QVariantMap peer =
        status.value("discovered_devices").toMap().value("device_list").toList().value(0).toMap();
    EXPECT_EQ(peer.value("ssid"), "DIRECT-ab") << "neither an older group's nor a network of somebody else";
}

TEST_F(WpaSupplicantTest, RequestsAreMadeOfItOrRefused)
{
    WiFiDirect wifi;
    scan(wifi);
    struct Row
    {
        QString peer;
        Intent::Type intent;
        Method::Type method;
        const char *pin;
        WiFiDirectResult::Type result;
        const char *asked;
    };
    const QString nobody = "42:00:00:00:09:00";
    const Row rows[] = {
        {Tv, Intent::GroupOwner, Method::PushButtonConfiguration, "", WiFiDirectResult::Success,
            "connect pbc intent 15"},
        {Tv, Intent::Client, Method::RandomPin, "12345670", WiFiDirectResult::Success,
            "connect display 12345670 intent 0"},
        {Tv.toUpper(), Intent::Any, Method::PresetPin, "12345670", WiFiDirectResult::Success,
            "connect keypad 12345670 intent 7"},
        {Laptop, Intent::GroupOwner, Method::PushButtonConfiguration, "", WiFiDirectResult::Success,
            "connect pbc join"},
        {Tv, Intent::Any, Method::RandomPin, "", WiFiDirectResult::InternalError, ""},
        {nobody, Intent::Any, Method::PushButtonConfiguration, "", WiFiDirectResult::DeviceNotFound, ""},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(wifi.requestConnect(row.peer, row.intent, row.method, row.pin), row.result) << row.asked;
        EXPECT_EQ(air.asked(), row.asked);
        if (row.result != WiFiDirectResult::Success)
            continue;
        EXPECT_TRUE(reaches(wifi, State::Connecting));
        EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Method::PushButtonConfiguration, ""),
            WiFiDirectResult::Busy);
        EXPECT_EQ(wifi.requestScan(), WiFiDirectResult::Busy);
        EXPECT_EQ(wifi.cancelConnectRequest(), WiFiDirectResult::Success);
        EXPECT_TRUE(reaches(wifi, State::Disconnected)) << "it says nothing by itself";
        EXPECT_EQ(air.asked(), "cancel");
    }
    EXPECT_EQ(wifi.cancelConnectRequest(), WiFiDirectResult::NoRequestToCancel);
    EXPECT_EQ(wifi.requestStartSession(), WiFiDirectResult::NoNetworkConnection);
    EXPECT_EQ(air.asked(), "");
    EXPECT_EQ(log.take(), QStringList("WiFiDirect: Service reports unable to parse message."));
}

TEST_F(WpaSupplicantTest, AConnectionFailsInThreeWays)
{
    WiFiDirect wifi;
    scan(wifi);
    const std::pair<const char *, const char *> failures[] = {
        {"GONegotiationFailure", "9"}, {"GroupFormationFailure", "0"}, {"WpsFailed", "18"}};
    for (const auto &[failure, code] : failures) {
        EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Method::PushButtonConfiguration, ""),
            WiFiDirectResult::Success);
        EXPECT_TRUE(reaches(wifi, State::Connecting));
        (void)air.happen("Fails", {failure, code});
        EXPECT_TRUE(reaches(wifi, State::Disconnected)) << failure;
    }
    // A group whose forming was cancelled too late is not kept.
    EXPECT_EQ(
        wifi.requestConnect(Tv, Intent::Any, Method::PushButtonConfiguration, ""), WiFiDirectResult::Success);
    EXPECT_EQ(wifi.cancelConnectRequest(), WiFiDirectResult::Success);
    EXPECT_TRUE(reaches(wifi, State::Disconnected));
    (void)air.asked();
    SignalLog heard(&wifi);
    (void)air.happen("GroupStarts", {"client", Tv});
    EXPECT_TRUE(waitUntil([&] { return air.asked() == "disconnect"; }));
    EXPECT_EQ(heard.settled(), "");
}

TEST_F(WpaSupplicantTest, AGroupIsThereUntilItIsOverHoweverItEnds)
{
    WiFiDirect wifi;
    scan(wifi);
    connectTv(&wifi, "client");
    EXPECT_TRUE(waitUntil([&] { return wifi.connectedDevices() == QStringList{Tv}; }));
    EXPECT_EQ(wifi.networkInterfaceName() + ' ' + wifi.networkSsid() + ' '
            + wifi.networkOwnerHardwareAddress() + ' ' + wifi.networkOwnerIpAddress() + ' '
            + wifi.networkPassword(),
        "p2p-wlan0-0 DIRECT-zz " + Tv + " 192.168.77.1 ");
    EXPECT_EQ(wifi.networkRole(), WiFiDirectRole::Client);
    EXPECT_EQ(wifi.ipAddress(Tv), "192.168.77.1");
    QString session;
    QObject::connect(&wifi, &WiFiDirect::sessionStarted, [&](const QString &key) { session = key; });
    EXPECT_EQ(wifi.requestStartSession(), WiFiDirectResult::Success);
    EXPECT_TRUE(waitUntil([&] { return !session.isEmpty(); }));
    EXPECT_EQ(wifi.requestStopSession("other"), WiFiDirectResult::InvalidSession);
    EXPECT_EQ(wifi.requestStopSession(session), WiFiDirectResult::Success);
    EXPECT_TRUE(reaches(wifi, State::Disconnected));
    EXPECT_EQ(air.asked(), "disconnect") << "of the group's interface, for the radio's refuses";

    connectTv(&wifi, "GO");
    EXPECT_EQ(wifi.networkPassword(), "jIvC85uB");
    EXPECT_EQ(wifi.networkOwnerHardwareAddress(), "46:00:00:00:00:00");
    (void)air.happen("Member", {Tv, "false"}); // as while a group forms
    (void)air.happen("Member", {Tv, "true"});
    (void)air.happen("GroupEnds", {"false"});
    EXPECT_TRUE(reaches(wifi, State::Disconnected)) << "its interface is gone";
    EXPECT_EQ(wifi.networkPassword(), "");

    connectTv(&wifi, "GO");
    (void)air.happen("Become", {"interface_disabled"});
    EXPECT_TRUE(waitUntil([&] { return !wifi.isEnabled(); }));
    EXPECT_EQ(wifi.connectionState(), State::Disconnected) << "though it says so only ten seconds later";
    EXPECT_EQ(wifi.visibleDevices(), QStringList());
    EXPECT_EQ(wifi.requestScan(), WiFiDirectResult::InternalError);
    EXPECT_EQ(log.take(), QStringList("WiFiDirect: Unknown error condition. ( 100 )"));
}

TEST_F(WpaSupplicantTest, APeerThatIsNotHeardOfStaysUntilTheNextScan)
{
    WiFiDirect wifi;
    scan(wifi);
    (void)air.happen("PeerGoes", {Tv});
    EXPECT_EQ(
        wifi.requestConnect(Tv, Intent::Any, Method::PushButtonConfiguration, ""), WiFiDirectResult::Success);
    EXPECT_TRUE(waitUntil([&] { return air.asked() == "find social 15"; })) << "it is looked for first";
    EXPECT_EQ(wifi.connectionState(), State::Connecting);
    bring(Tv);
    EXPECT_TRUE(waitUntil([&] { return air.asked().contains("connect pbc intent 7"); }));
    EXPECT_EQ(wifi.cancelConnectRequest(), WiFiDirectResult::Success);
    (void)air.happen("PeerGoes", {Tv});
    EXPECT_EQ(wifi.visibleDevices().size(), 2);
    EXPECT_EQ(wifi.requestScan(), WiFiDirectResult::Success);
    (void)air.happen("FindEnds");
    EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices() == QStringList{Laptop}; }));
}

TEST_F(WpaSupplicantTest, ARestartIsSeenOnlyInWhatItLost)
{
    WiFiDirect wifi;
    scan(wifi);
    connectTv(&wifi, "client");
    rig->stop();
    EXPECT_TRUE(reaches(wifi, State::Disconnected)) << "a group is gone at once";
    EXPECT_EQ(wifi.visibleDevices().size(), 2);
    EXPECT_TRUE(wifi.isEnabled());
    rig->start();
    EXPECT_TRUE(waitUntil([&] { return air.asked().contains("find social"); })) << "peers are looked for";
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Method::PushButtonConfiguration, ""),
        WiFiDirectResult::DeviceNotFound)
        << "until they are found";
    bring(Tv);
    EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices() == QStringList{Tv}; })) << "the other is not";
    // NetworkManager takes the radio away where it is told not to manage it any more.
    (void)air.happen("Taken");
    EXPECT_TRUE(waitUntil([&] { return air.asked().contains("create wlan0 nl80211"); }));
}

TEST_F(WpaSupplicantTest, AGroupAndItsSessionsOutliveTheDaemon)
{
    WiFiDirect wifi;
    scan(wifi);
    connectTv(&wifi, "client");
    EXPECT_TRUE(waitUntil([&] { return wifi.connectedDevices() == QStringList{Tv}; }));
    QString session;
    QObject::connect(&wifi, &WiFiDirect::sessionStarted, [&](const QString &key) { session = key; });
    EXPECT_EQ(wifi.requestStartSession(), WiFiDirectResult::Success);
    EXPECT_TRUE(waitUntil([&] { return !session.isEmpty(); }));
    SignalLog heard(&wifi);
    daemon.kill();
    daemon.waitForFinished();
    startDaemon();
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(wifi.requestStopSession(session), WiFiDirectResult::Success);
    EXPECT_TRUE(reaches(wifi, State::Disconnected));
}

} // namespace
