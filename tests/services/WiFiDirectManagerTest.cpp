// The simulated Wi-Fi Direct as applications have it.

#include "services/Services.hpp"

#include <oz/device/WiFiDirect.hpp>

#include <QRegularExpression>

#include <thread>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using Result = WiFiDirectResult;
using Intent = WiFiDirectIntent;
using State = WiFiDirectConnectionState;
using Wps = WiFiDirectWpsMethod;

const QString Control = "/pps/services/wifi_p2p/manager/control";
const QString Tv = "02:00:00:00:01:01";
const QString Laptop = "02:00:00:00:01:02";
const QString Printer = "02:00:00:00:01:03";
const QString Camera = "02:00:00:00:01:04";
const QString Speaker = "02:00:00:00:01:05";

class WiFiDirectManagerTest : public ServicesTest
{
protected:
    WiFiDirectManagerTest()
        : ServicesTest(R"({"wifi-direct": {"scan-seconds": 0.2, "connect-seconds": 0.1}})")
    {
    }

    // The signals that have come, without times, numbers and what deviceDiscovered only says again.
    static QString eventsOf(SignalLog *heard)
    {
        static const QRegularExpression repeated(
            R"(lastUpdate\([^)]*\) |deviceFound\([^)]*\) |(\w+\((?:"[^"]*", ){0,2}\d[^)]*\)) ?)");
        return QString(heard->take() + ' ').remove(repeated).trimmed();
    }
    static void scan(WiFiDirect *wifi)
    {
        bool ended = false;
        QObject::connect(wifi, &WiFiDirect::scanCompleted, wifi, [&] { ended = true; });
        EXPECT_EQ(wifi->requestScan(), Result::Success);
        EXPECT_TRUE(waitUntil([&] { return ended; }));
        wifi->disconnect(SIGNAL(scanCompleted()));
    }
    // The role that the phone gets; NoRole where nothing is connected in the end.
    static WiFiDirectRole::Type roleAfter(
        WiFiDirect *wifi, const QString &peer, Intent::Type intent, Wps::Type method, const QString &pin)
    {
        EXPECT_EQ(wifi->requestConnect(peer, intent, method, pin), Result::Success);
        EXPECT_TRUE(waitUntil([&] { return wifi->connectionState() == State::Connecting; }));
        EXPECT_TRUE(waitUntil([&] { return wifi->connectionState() != State::Connecting; }));
        return wifi->connectionState() == State::Connected ? wifi->networkRole() : WiFiDirectRole::NoRole;
    }
};

TEST_F(WiFiDirectManagerTest, PeersInRangeComeIntoSightWithAScanAndGoWhenTheyAreOut)
{
    WiFiDirect wifi;
    SignalLog heard(&wifi);
    EXPECT_TRUE(wifi.isEnabled());
    sim("wifi-direct peer-goes laptop");
    const qint64 begun = QDateTime::currentSecsSinceEpoch();
    scan(&wifi);
    EXPECT_EQ(eventsOf(&heard),
        "scanning(true) deviceDiscovered(\"Living room\", \"02:00:00:00:01:01\", Display, 2, NoRole) "
        "deviceDiscovered(\"Printer\", \"02:00:00:00:01:03\", PrinterCopierFaxOrScanner, 1, GroupOwner) "
        "deviceDiscovered(\"Camera\", \"02:00:00:00:01:04\", Camera, 1, Client) scanning(false) "
        "scanCompleted()");
    EXPECT_GE(wifi.lastUpdate().toSecsSinceEpoch(), begun);
    sim("wifi-direct peer-appears laptop");
    sim("wifi-direct peer-goes tv");
    EXPECT_TRUE(heard.settled().endsWith("deviceLost(\"02:00:00:00:01:01\")"));
    EXPECT_EQ(wifi.requestScan(), Result::Success);
    EXPECT_EQ(wifi.requestScan(), Result::Busy);
    EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices() == QStringList{Printer, Camera, Laptop}; }));
    sim("wifi-direct enabled off");
    EXPECT_TRUE(waitUntil([&] { return wifi.visibleDevices().isEmpty(); }));
    EXPECT_FALSE(wifi.isEnabled());
    EXPECT_FALSE(wifi.isScanning());
    EXPECT_EQ(wifi.requestScan(), Result::InternalError);
    EXPECT_EQ(log.take(), QStringList{"WiFiDirect: Unknown error condition. ( 100 )"});
    sim("wifi-direct supported off");
    EXPECT_EQ(wifi.requestScan(), Result::NotSupported);
    sim("wifi-direct supported on");
    sim("wifi-direct enabled on");
    EXPECT_TRUE(waitUntil([&] { return wifi.isEnabled(); }));
}

TEST_F(WiFiDirectManagerTest, AConnectionWantsAPeerThatAgreesOnRolesAndPin)
{
    WiFiDirect wifi;
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Wps::PushButtonConfiguration, ""), Result::DeviceNotFound);
    sim("wifi-direct peer-appears speaker");
    scan(&wifi);
    constexpr auto NoRole = WiFiDirectRole::NoRole;
    constexpr auto Owner = WiFiDirectRole::GroupOwner;
    constexpr auto Client = WiFiDirectRole::Client;
    const std::tuple<QString, Intent::Type, Wps::Type, const char *, WiFiDirectRole::Type> rows[] = {
        {Tv, Intent::Any, Wps::RandomPin, "12345670", Client},
        {Tv, Intent::GroupOwner, Wps::PresetPin, "12345670", Owner},
        {Tv, Intent::Client, Wps::PushButtonConfiguration, "", Client},
        {Tv, Intent::Any, Wps::RandomPin, "1234567", NoRole},
        {Tv.toUpper(), Intent::Any, Wps::PushButtonConfiguration, "wrong", Client},
        {Laptop, Intent::Any, Wps::PushButtonConfiguration, "", Owner},
        {Laptop, Intent::Client, Wps::PushButtonConfiguration, "", NoRole},
        {Speaker, Intent::GroupOwner, Wps::PushButtonConfiguration, "", NoRole},
        {Printer, Intent::Any, Wps::PushButtonConfiguration, "", Client},
        {Printer, Intent::GroupOwner, Wps::PushButtonConfiguration, "", NoRole},
        {Printer, Intent::Any, Wps::RandomPin, "12345670", NoRole},
        {Camera, Intent::Any, Wps::PushButtonConfiguration, "", NoRole},
    };
    for (const auto &[peer, intent, method, pin, role] : rows) {
        EXPECT_EQ(roleAfter(&wifi, peer, intent, method, pin), role)
            << peer.toStdString() << intent << method << pin;
        sim("wifi-direct enabled off");
        sim("wifi-direct enabled on");
        ASSERT_TRUE(waitUntil([&] { return wifi.connectionState() == State::Disconnected; }));
        scan(&wifi);
    }
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Wps::PresetPin, ""), Result::InternalError);
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Type(3), Wps::PresetPin, "1"), Result::InternalError);
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Wps::Type(3), "1"), Result::InternalError);
    EXPECT_EQ(log.take(), QStringList(3, "WiFiDirect: Service reports unable to parse message."));
    EXPECT_EQ(
        wifi.requestConnect(QString(4096, 'x'), Intent::Any, Wps::RandomPin, "\"\n"), Result::DeviceNotFound);
}

TEST_F(WiFiDirectManagerTest, OneConnectionAtATimeIsTheGroupOfItsPeersAndSessions)
{
    WiFiDirect wifi;
    scan(&wifi);
    SignalLog heard(&wifi);
    EXPECT_EQ(wifi.cancelConnectRequest(), Result::NoRequestToCancel);
    EXPECT_EQ(wifi.requestStartSession(), Result::NoNetworkConnection);
    EXPECT_EQ(wifi.requestStopSession("none"), Result::NoNetworkConnection);
    EXPECT_EQ(wifi.ipAddress(Laptop), "");
    EXPECT_EQ(wifi.requestConnect(Laptop, Intent::Any, Wps::PushButtonConfiguration, ""), Result::Success);
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Wps::PushButtonConfiguration, ""), Result::Busy);
    EXPECT_EQ(wifi.requestScan(), Result::Busy);
    EXPECT_EQ(wifi.ipAddress(Laptop), "");
    EXPECT_EQ(wifi.cancelConnectRequest(), Result::Success);
    EXPECT_EQ(log.take(),
        (QStringList{"WiFiDirect: Device not not connected to network. ( 64 )",
            "WiFiDirect: Control was busy. ( 16 )"}));
    heard.settled();

    EXPECT_EQ(
        roleAfter(&wifi, Laptop, Intent::Any, Wps::PushButtonConfiguration, ""), WiFiDirectRole::GroupOwner);
    settle();
    EXPECT_EQ(eventsOf(&heard),
        "connectionState(Connecting) connectionState(Connected) networkInterfaceName(\"p2p0\") "
        "networkRole(GroupOwner) networkSsid(\"DIRECT-oz-Kestrel\") "
        "networkOwnerHardwareAddress(\"02:00:00:00:00:01\") networkOwnerIpAddress(\"192.168.49.1\") "
        "networkPassword(\"kestrel-direct\") "
        "deviceConnected(\"Laptop\", \"02:00:00:00:01:02\", Computer, \"192.168.49.2\", Client)");
    EXPECT_EQ(wifi.requestConnect(Tv, Intent::Any, Wps::PushButtonConfiguration, ""), Result::Busy);
    sim("wifi-direct peer-joins tv");
    EXPECT_TRUE(waitUntil([&] { return wifi.connectedDevices() == QStringList{Laptop, Tv}; }));
    EXPECT_EQ(wifi.ipAddress(Tv), "192.168.49.3");
    EXPECT_EQ(wifi.ipAddress(Printer), "");
    sim("wifi-direct peer-leaves tv");
    EXPECT_EQ(wifi.ipAddress(Tv), "");
    EXPECT_EQ(log.take(), QStringList(2, "WiFiDirect: Device not found. ( 19 )"));

    QStringList keys;
    QObject::connect(&wifi, &WiFiDirect::sessionStarted, [&](const QString &key) { keys.append(key); });
    EXPECT_EQ(wifi.requestStartSession(), Result::Success);
    EXPECT_EQ(wifi.requestStartSession(), Result::Success);
    settle();
    ASSERT_EQ(keys.size(), 2);
    EXPECT_NE(keys[0], keys[1]);
    EXPECT_EQ(wifi.requestStopSession(keys[0] + ' '), Result::InvalidSession);
    EXPECT_EQ(wifi.requestStopSession(keys[0]), Result::Success);
    EXPECT_EQ(wifi.requestStopSession(keys[0]), Result::InvalidSession);
    EXPECT_EQ(wifi.connectedDevices(), QStringList{Laptop});
    heard.settled();
    EXPECT_EQ(wifi.requestStopSession(keys[1]), Result::Success);
    EXPECT_TRUE(waitUntil([&] { return wifi.connectedDevices().isEmpty(); }));
    EXPECT_EQ(wifi.requestStopSession(keys[1]), Result::NoNetworkConnection);

    EXPECT_EQ(roleAfter(&wifi, Tv, Intent::Any, Wps::PresetPin, "12345670"), WiFiDirectRole::Client);
    EXPECT_EQ(wifi.networkPassword(), "direct-password");
    sim("wifi-direct peer-goes tv");
    EXPECT_TRUE(waitUntil([&] { return wifi.connectionState() == State::Disconnected; }));
}

TEST_F(WiFiDirectManagerTest, EachErrorOfEachRequestCanBeArranged)
{
    WiFiDirect wifi;
    const std::tuple<const char *, int, std::function<int()>> rows[] = {
        {"scan 16", Result::Busy, [&] { return wifi.requestScan(); }},
        {"connect 22", Result::InternalError,
            [&] { return wifi.requestConnect(Tv, Intent::Any, Wps::PushButtonConfiguration, ""); }},
        {"cancel-connect 64", Result::InternalError, [&] { return wifi.cancelConnectRequest(); }},
        {"start-session 5", Result::InternalError, [&] { return wifi.requestStartSession(); }},
        {"stop-session 22", Result::InvalidSession, [&] { return wifi.requestStopSession("k"); }},
        {"get-ip-address 16", 0, [&] { return wifi.ipAddress(Tv).size(); }},
    };
    for (const auto &[order, result, request] : rows) {
        sim(QString("wifi-direct fail-next ") + order);
        EXPECT_EQ(request(), result) << order;
    }
    EXPECT_EQ(log.take().size(), 4);
    sim("wifi-direct fail-next scan 19");
    EXPECT_EQ(wifi.cancelConnectRequest(), Result::NoRequestToCancel) << "is not failed in its place";
    EXPECT_EQ(wifi.requestScan(), Result::DeviceNotFound);
    EXPECT_EQ(wifi.requestScan(), Result::Success) << "once only";
    EXPECT_EQ(ask(Control, {{"msg", "wifi_p2p_cancel_connect"}, {"id", "x"}}).keys(),
        (QStringList{"err", "errstr", "id", "res"}));
    EXPECT_EQ(ask(Control, {{"msg", "wifi_p2p_connect"}, {"dat", "no map"}}).value("err"), 22);
}

TEST_F(WiFiDirectManagerTest, ManyClientsAtOnceHaveTheirOwnAnswersAndCostTheServiceNothing)
{
    const auto before = openDescriptors(daemon.processId());
    std::atomic<int> wrong = 0;
    std::vector<std::thread> clients;
    clients.reserve(8);
    for (int client = 0; client < 8; ++client) {
        clients.emplace_back([&, client] {
            WiFiDirect wifi;
            PpsObject control(Control + "?wait");
            wrong += !control.open(PpsOpenMode::PublishSubscribe);
            for (int i = 0; i < 100; ++i) {
                wrong += wifi.requestStopSession("k") != Result::NoNetworkConnection;
                wrong += wifi.cancelConnectRequest() != Result::NoRequestToCancel;
                wrong += wifi.requestConnect("x", Intent::Any, Wps::PushButtonConfiguration, "")
                    != Result::DeviceNotFound;
                const QString id = QString("%1-%2").arg(client).arg(i);
                wrong += !control.write(PpsObject::encode({{"msg", "wifi_p2p_fly"}, {"id", id}}));
                wrong += PpsObject::decode(control.read()).first().toMap().value("id") != id;
            }
        });
    }
    for (std::thread &client : clients)
        client.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(waitUntil([&] { return openDescriptors(daemon.processId()) <= before; }));
}

} // namespace
