#include "harness/ControlService.hpp"
#include "harness/Testing.hpp"

#include <oz/Limits.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QMetaMethod>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using Result = WiFiDirectResult;

const QString Status = "/pps/services/wifi_p2p/manager/status";
const QString Control = "/pps/services/wifi_p2p/manager/control";
const QString NotThere = " \"No such file or directory\" )";

// A status object with these peers in sight.
QByteArray seeing(const QByteArray &peers)
{
    return "discovered_devices:json:{\"device_list\":" + peers + "}\n";
}

class WiFiDirectTest : public DeviceTest
{
protected:
    void SetUp() override { root.place(Status, "@status\np2p_mgr_enabled:n:1\n"); }
};

TEST_F(WiFiDirectTest, AnnouncesEachUpdateInTheOrderOfItsParts)
{
    const std::tuple<QByteArray, QString> updates[] = {
        {"p2p_mgr_enabled:n:0\nscanning:b:true", "scanning(true) enabled(true)"},
        {R"(connection:json:{"status":"connecting","ssid":"early"})",
            "scanning(false) scanCompleted() connectionState(Connecting) connectionState(1)"},
        {"p2p_mgr_enabled:n:3\n"
         R"(connection:json:{"status":"connected","network_if":"p2p0","role":"client","ssid":"S"})",
            "enabled(false) connectionState(Connected) connectionState(2) networkInterfaceName(\"p2p0\") "
            "networkRole(Client) networkRole(2) networkSsid(\"S\")"},
        {R"(connection:json:{"status":"connected","network_if":"p2p0","role":"go"})",
            "enabled(true) networkRole(Unknown) networkRole(0) networkSsid(\"\")"},
        {R"(connection:json:{"status":"connected","network_if":"p2p0","role":"GO","ssid":"S",)"
         R"("go_mac_addr":"02:00","go_ip_addr":"10.0.0.1","password":"secret"})",
            "networkRole(GroupOwner) networkRole(1) networkSsid(\"S\") "
            "networkOwnerHardwareAddress(\"02:00\") networkOwnerIpAddress(\"10.0.0.1\") "
            "networkPassword(\"secret\")"},
        {R"(connection:json:{"status":"disconnected","role":"GO"})",
            "connectionState(Disconnected) connectionState(3) networkInterfaceName(\"\") "
            "networkRole(Unknown) networkRole(0) networkSsid(\"\") networkOwnerHardwareAddress(\"\") "
            "networkOwnerIpAddress(\"\") networkPassword(\"\")"},
        {"connection::connected", "connectionState(Unknown) connectionState(0)"},
    };
    WiFiDirect wifi;
    SignalLog heard(&wifi);
    for (const auto &[update, announced] : updates) {
        root.place(Status, "@status\n" + update + "\n");
        EXPECT_EQ(heard.waitFor(1), announced);
    }
    root.place(Status, "@status\nlast_discover_update:n:4000000000\n");
    EXPECT_TRUE(heard.waitFor(1).startsWith("lastUpdate("));
    root.place(Status, "@status\n");
    EXPECT_EQ(heard.settled(), "") << "a missing time is no other time";
    EXPECT_EQ(wifi.lastUpdate().toSecsSinceEpoch(), 4'000'000'000);
}

TEST_F(WiFiDirectTest, PeersComeInTheOrderOfTheListAndGoInTheOrderOfTheirComing)
{
    WiFiDirect wifi;
    SignalLog heard(&wifi);
    const auto discovered = [](const QString &who, const QString &typed, const QString &numbers) {
        const auto type = [](const QString &values) { return values.section(", ", 0, 0); };
        return "deviceFound(" + who + type(typed) + ") deviceDiscovered(" + who + typed + ") deviceFound("
            + who + type(numbers) + ") deviceDiscovered(" + who + numbers + ") ";
    };
    root.place(Status,
        seeing(R"([{"mac_addr":"b","name":"TV","type":"7-0050F204-1","wfd_device_info":"x","ssid":"S",)"
               R"("go_mac_address":"c"},{"mac_addr":"a","type":"255","go_mac_address":"b"},)"
               R"({"mac_addr":"","name":"none"},"b",{"mac_addr":"B","type":"x-1"},{"mac_addr":"a"}])"));
    EXPECT_EQ(heard.waitFor(13),
        ("enabled(true) " + discovered("\"TV\", \"b\", ", "Display, 2, GroupOwner", "7, 2, 1")
            + discovered("\"\", \"a\", ", "Other, 1, Client", "12, 1, 2")
            + discovered("\"\", \"B\", ", "Unknown, 1, NoRole", "0, 1, 3"))
            .trimmed());
    EXPECT_EQ(wifi.visibleDevices(), (QStringList{"b", "a", "B"}));
    EXPECT_EQ(wifi.deviceType("b"), WiFiDirectDeviceType::Display);

    const QByteArray connected = R"(connected_devices:json:{"device_list":[)"
                                 R"({"mac_addr":"p","name":"P","type":"10-1","role":"GO","ip_addr":"1.2"},)"
                                 R"({"mac_addr":"q","role":"client"},{"mac_addr":"r","role":"any"},)"
                                 R"({"mac_addr":"p","name":"again"},{"name":"nobody"}]})"
                                 "\n";
    root.place(Status, seeing(R"([{"mac_addr":"B","name":"changed"}])") + connected);
    EXPECT_EQ(heard.waitFor(8),
        "deviceLost(\"b\") deviceLost(\"a\") "
        "deviceConnected(\"P\", \"p\", Telephone, \"1.2\", GroupOwner) "
        "deviceConnected(\"P\", \"p\", 10, \"1.2\", 0) "
        "deviceConnected(\"\", \"q\", Unknown, \"\", Client) deviceConnected(\"\", \"q\", 0, \"\", 1) "
        "deviceConnected(\"\", \"r\", Unknown, \"\", Any) deviceConnected(\"\", \"r\", 0, \"\", 2)");
    EXPECT_EQ(wifi.name("B"), "") << "what was known of a peer stays";
    EXPECT_EQ(wifi.name("p"), "P");
    EXPECT_EQ(wifi.name("b"), "");
    EXPECT_EQ(wifi.deviceType("p"), WiFiDirectDeviceType::Unknown) << "only of peers in sight";
    EXPECT_EQ(wifi.connectedDevices(), (QStringList{"p", "q", "r"}));

    root.place(Status, seeing("\"no list\"") + "connected_devices::nor a map\n");
    EXPECT_EQ(heard.waitFor(4),
        "deviceLost(\"B\") deviceDisconnected(\"p\") deviceDisconnected(\"q\") deviceDisconnected(\"r\")");
}

TEST_F(WiFiDirectTest, EveryCategoryOfWpsHasItsType)
{
    const std::tuple<const char *, WiFiDirectDeviceType::Type> rows[] = {
        {"1-0050F204-1", WiFiDirectDeviceType::Computer}, {"11", WiFiDirectDeviceType::Audio},
        {"12", WiFiDirectDeviceType::Unknown}, {"0x7-1", WiFiDirectDeviceType::Unknown}};
    for (const auto &[text, type] : rows) {
        root.place(Status, seeing("[{\"mac_addr\":\"a\",\"type\":\"" + QByteArray(text) + "\"}]"));
        EXPECT_EQ(WiFiDirect().deviceType("a"), type) << text;
    }
}

const QByteArray Eventful = seeing(R"([{"mac_addr":"new"}])") + R"(scanning:b:false
last_discover_update:n:5
connection:json:{"status":"connected","network_if":"i","role":"GO","ssid":"s","go_mac_addr":"m","go_ip_addr":"p","password":"w"}
connected_devices:json:{"device_list":[{"mac_addr":"new"}]}
)";

TEST_F(WiFiDirectTest, ASlotOfAnySignalMayDestroyIt)
{
    constexpr int count = 21;
    for (int last = 1; last <= count; ++last) {
        root.place(Status,
            "@status\np2p_mgr_enabled:n:1\nscanning:b:true\n" + seeing("[{\"mac_addr\":\"old\"}]")
                + "connected_devices:json:{\"device_list\":[{\"mac_addr\":\"old\"}]}\n");
        EXPECT_TRUE(endsWithSignal(last, new WiFiDirect, [&] { root.place(Status, Eventful); })) << last;
    }
}

TEST_F(WiFiDirectTest, WhatANewerReadingWithinASlotOvertakesIsAnnouncedNoFurther)
{
    for (const char *slot : {SIGNAL(scanningChanged(bool)), SIGNAL(lastUpdateChanged(QDateTime)),
             SIGNAL(networkSsidChanged(QString)), SIGNAL(deviceFound(QString, QString, int)),
             SIGNAL(deviceDisconnected(QString))}) {
        root.place(Status,
            "@status\nscanning:b:true\nconnected_devices:json:{\"device_list\":[{\"mac_addr\":\"old\"}]}\n");
        WiFiDirect wifi;
        const auto newer = [&] {
            for (const QByteArray scanning : {"true", "false"}) {
                root.place(Status,
                    seeing(R"([{"mac_addr":"newest"}])") + "last_discover_update:n:6\nscanning:b:" + scanning
                        + '\n');
                EXPECT_TRUE(waitUntil([&] { return wifi.isScanning() == (scanning == "true"); }));
            }
            EXPECT_EQ(wifi.visibleDevices(), QStringList{"newest"});
        };
        SignalLog heard(&wifi);
        bool scanEnded = false; // before the newer one, where it is
        oz::meta::SignalTap tap(
            &wifi, [&, done = false](const QMetaMethod &signal, const QVariantList &) mutable {
                const QByteArray name = signal.methodSignature();
                scanEnded = scanEnded || (!done && name == "scanCompleted()");
                if (!done && name == QMetaObject::normalizedSignature(slot + 1)) {
                    done = true;
                    newer();
                }
            });
        root.place(Status, Eventful);
        ASSERT_TRUE(waitUntil([&] { return wifi.lastUpdate().toSecsSinceEpoch() == 6; })) << slot;
        const QString all = heard.settled();
        EXPECT_EQ(all.count("scanCompleted()"), scanEnded ? 2 : 1) << slot << all.toStdString();
        EXPECT_LE(all.count("lastUpdate("), 2) << all.toStdString();
        EXPECT_EQ(wifi.visibleDevices(), QStringList{"newest"}) << slot;
        EXPECT_EQ(wifi.connectedDevices(), QStringList()) << slot;
        EXPECT_EQ(wifi.networkSsid(), "") << slot;
    }
}

TEST_F(WiFiDirectTest, MembersOfLaterTimesAndThoseForScriptsAreMarked)
{
    const QMetaObject &type = WiFiDirect::staticMetaObject;
    QByteArrayList later;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        if (type.method(i).revision() & 0xff)
            later.append(type.method(i).name());
    }
    EXPECT_EQ(later, (QByteArrayList{"deviceDiscovered", "deviceDiscovered"}));
    EXPECT_EQ(type.method(type.indexOfMethod("requestConnect(QString,int,int,QString)")).access(),
        QMetaMethod::Protected);
}

// A request, and what the class makes of each answer of the service.
struct Request
{
    const char *name;
    std::function<QVariant(WiFiDirect &)> send;
    QVariant argument;
    QVariant notSupported, failed;
    std::map<int, std::pair<QVariant, QString>> answers; // to each error: the result, and a warning
    bool tellsEncoding = false; // "to control" or "for control", and the error text of a malformed answer
};

QVariant connectBy(WiFiDirect &wifi, int intent, int method, const QString &pin)
{
    int result = -1;
    QMetaObject::invokeMethod(&wifi, "requestConnect", Q_RETURN_ARG(int, result), Q_ARG(QString, "02:\"aB"),
        Q_ARG(int, intent), Q_ARG(int, method), Q_ARG(QString, pin));
    return result;
}

const std::map<int, std::pair<QVariant, QString>> ConnectAnswers{{0, {0, {}}}, {16, {2, {}}}, {19, {3, {}}},
    {22, {1, "WiFiDirect: Service reports unable to parse message."}}};

const Request Requests[] = {
    {"wifi_p2p_scan_and_listen", [](WiFiDirect &wifi) { return wifi.requestScan(); }, {}, 6, 1,
        ConnectAnswers},
    {"wifi_p2p_connect",
        [](WiFiDirect &wifi) {
            return int(wifi.requestConnect(
                "a", WiFiDirectIntent::Any, WiFiDirectWpsMethod::PushButtonConfiguration, ""));
        },
        QVariantMap{{"addr", "a"}, {"go_intent", "any"}, {"wps_method", 0}, {"wps_pin", "NULL"}}, 6, 1,
        ConnectAnswers, true},
    {"wifi_p2p_connect", [](WiFiDirect &wifi) { return connectBy(wifi, 0, 1, "1\n2"); },
        QVariantMap{{"addr", "02:\"aB"}, {"go_intent", "GO"}, {"wps_method", 2}, {"wps_pin", "1\n2"}}, 6, 1,
        ConnectAnswers, true},
    {"wifi_p2p_connect", [](WiFiDirect &wifi) { return connectBy(wifi, 1, 2, "0"); },
        QVariantMap{{"addr", "02:\"aB"}, {"go_intent", "client"}, {"wps_method", 3}, {"wps_pin", "0"}}, 6, 1,
        ConnectAnswers, true},
    {"wifi_p2p_connect", [](WiFiDirect &wifi) { return connectBy(wifi, 3, -1, "0"); },
        QVariantMap{{"addr", "02:\"aB"}, {"wps_pin", "0"}}, 6, 1, ConnectAnswers, true},
    {"wifi_p2p_cancel_connect", [](WiFiDirect &wifi) { return wifi.cancelConnectRequest(); }, {}, 6, 1,
        {{0, {0, {}}}, {22, {5, {}}}}, true},
    {"wifi_p2p_start_session", [](WiFiDirect &wifi) { return wifi.requestStartSession(); }, {}, 6, 1,
        {{0, {0, {}}}, {64, {4, {}}}}},
    {"wifi_p2p_stop_session", [](WiFiDirect &wifi) { return wifi.requestStopSession("k"); },
        QVariantMap{{"session_key", "k"}}, 6, 1, {{0, {0, {}}}, {22, {7, {}}}, {64, {4, {}}}}},
    {"wifi_p2p_get_ip_address", [](WiFiDirect &wifi) { return wifi.ipAddress("a"); },
        QVariantMap{{"addr", "a"}}, "", "",
        {{0, {"10.0.0.9", {}}}, {16, {"", "WiFiDirect: Control was busy. ( 16 )"}},
            {19, {"", "WiFiDirect: Device not found. ( 19 )"}},
            {22, {"", "WiFiDirect: Internal error reported from control. ( 22 )"}},
            {64, {"", "WiFiDirect: Device not not connected to network. ( 64 )"}}},
        true},
};

TEST_F(WiFiDirectTest, EachRequestSaysWhatItWantsAndHasItsOwnMeaningForEachError)
{
    WiFiDirect wifi;
    ControlService service(Control, ControlService::hangUp);
    for (const Request &request : Requests) {
        const QByteArray head = QByteArray("@control\nres::") + request.name + "\nid::oz.device.WiFiDirect\n"
            + R"(dat:json:{"session_key":"k7","ip_address":"10.0.0.9"})" + '\n';
        QVariantMap expected{{"msg", request.name}, {"id", "oz.device.WiFiDirect"}};
        if (request.argument.isValid())
            expected.insert("dat", request.argument);
        for (const int error : {0, 16, 19, 22, 64, 5, -1}) {
            service.serveWith(ControlService::answer(head + "err:n:" + QByteArray::number(error) + '\n'));
            const auto known = request.answers.find(error);
            const auto [result, warning] = known != request.answers.end()
                ? known->second
                : std::pair(request.failed,
                    "WiFiDirect: Unknown error condition. ( " + QString::number(error) + " )");
            EXPECT_EQ(request.send(wifi), result) << request.name << error;
            EXPECT_EQ(log.take(), warning.isEmpty() ? QStringList() : QStringList{warning});
            EXPECT_EQ(service.take(), QList<QVariantMap>{expected});
        }
        service.serveWith(ControlService::answer(head));
        EXPECT_EQ(request.send(wifi), request.answers.at(0).first) << "no error is none";
        for (const QByteArray &answer : {QByteArray(head).replace(request.name, "wifi_p2p_other"),
                 QByteArray(head).replace("WiFi", "Other"), QByteArray(head).replace("@control", "@other"),
                 QByteArray("@control\nerr:n:0\n")}) {
            service.serveWith(ControlService::answer(answer));
            EXPECT_EQ(request.send(wifi), request.failed) << answer.constData();
            EXPECT_EQ(log.take(), QStringList{"WiFiDirect: Malformed response from control."});
        }
        service.take();
    }
}

TEST_F(WiFiDirectTest, AnExchangeThatFailsIsToldInTheWordsOfItsRequest)
{
    for (const Request &request : Requests) {
        WiFiDirect wifi;
        EXPECT_EQ(request.send(wifi), request.failed);
        EXPECT_EQ(log.take(), QStringList{"WiFiDirect: Unable to open control. (" + NotThere});
        ControlService service(Control, ControlService::hangUp);
        EXPECT_EQ(request.send(wifi), request.failed);
        EXPECT_EQ(
            log.take(), QStringList{"WiFiDirect: Unable to read control. ( \"Connection reset by peer\" )"});
        service.serveWith([](PpsServer &, quint64) {}); // never answers
        setWaitLimit(std::chrono::milliseconds(20));
        EXPECT_EQ(request.send(wifi), request.failed);
        EXPECT_EQ(
            log.take(), QStringList{"WiFiDirect: Unable to read control. ( \"Connection timed out\" )"});
        setWaitLimit(std::chrono::seconds(60));
        service.serveWith(ControlService::answer("rubbish\n"));
        EXPECT_EQ(request.send(wifi), request.failed);
        EXPECT_EQ(log.take(),
            QStringList{QString("WiFiDirect: Unable to decode control result.")
                + (request.tellsEncoding ? " ( \"\" )" : "")});
    }
    const QString halfOfACharacter(1, QChar(0xd800));
    {
        ControlService service(Control, ControlService::hangUp);
        EXPECT_EQ(WiFiDirect().ipAddress(halfOfACharacter), "");
        EXPECT_EQ(WiFiDirect().requestStopSession(halfOfACharacter), Result::InternalError);
        EXPECT_EQ(log.take(),
            (QStringList{"WiFiDirect: Unable to encode message for control.",
                "WiFiDirect: Unable to encode message to control."}));
    }
    // A state object in the service's place, where nobody may publish.
    root.place(Control, "@control\n");
    root.setMode("/pps/services/wifi_p2p/manager", 0555);
    const auto warnings = [&] {
        EXPECT_EQ(WiFiDirect().ipAddress("a"), "");
        EXPECT_EQ(WiFiDirect().requestScan(), Result::InternalError);
        const QString unwritten = "WiFiDirect: Unable to write to control. ( \"Permission denied\" )";
        return log.take() == QStringList{unwritten, unwritten} ? 0 : 1;
    };
    EXPECT_EQ(runWithoutPrivileges(warnings), 0);
    root.setMode("/pps/services/wifi_p2p/manager", 0755);
}

TEST_F(WiFiDirectTest, WhereItIsNotSupportedNothingIsAskedAndNothingHeard)
{
    ControlService service(Control, ControlService::hangUp);
    const std::tuple<QByteArray, QStringList> rows[] = {
        {"@status\np2p_mgr_enabled:n:2\nscanning:b:true\n", {}},
        {"rubbish\n", {"WiFiDirect: Unable to parse WiFiDirect status."}},
        {"", {"WiFiDirect: Unable to locate WiFiDirect PPS channel."}},
    };
    for (const auto &[status, warning] : rows) {
        root.place(Status, status);
        if (status.isEmpty())
            root.remove(Status);
        WiFiDirect wifi;
        SignalLog heard(&wifi);
        EXPECT_FALSE(wifi.property("supported").toBool());
        EXPECT_EQ(log.take(), warning + warning);
        for (const Request &request : Requests) {
            EXPECT_EQ(request.send(wifi), request.notSupported) << request.name;
            EXPECT_EQ(log.take(), warning);
        }
        SetUp();
        root.place(Status, Eventful);
        EXPECT_EQ(heard.settled(), "");
        EXPECT_TRUE(WiFiDirect::isSupported());
    }
    EXPECT_EQ(service.take(), QList<QVariantMap>());
}

TEST_F(WiFiDirectTest, ASessionIsAnnouncedOnceTheRequestHasReturned)
{
    ControlService service(Control,
        ControlService::answer("@control\nres::wifi_p2p_start_session\nid::oz.device.WiFiDirect\n"
                               "dat:json:{\"session_key\":\"k7\"}\n"));
    auto *wifi = new WiFiDirect;
    SignalLog heard(wifi);
    EXPECT_EQ(wifi->requestStartSession(), Result::Success);
    EXPECT_EQ(heard.take(), "");
    EXPECT_EQ(heard.waitFor(1), "sessionStarted(\"k7\")");
    service.serveWith(
        ControlService::answer("@control\nres::wifi_p2p_stop_session\nid::oz.device.WiFiDirect\n"));
    EXPECT_EQ(wifi->requestStopSession("k7"), Result::Success);
    EXPECT_EQ(heard.waitFor(1), "sessionStopped()");
    EXPECT_EQ(wifi->requestStopSession("k7"), Result::Success);
    delete wifi;
    EXPECT_EQ(heard.settled(), "") << "what it had still to say goes with it";
}

} // namespace
