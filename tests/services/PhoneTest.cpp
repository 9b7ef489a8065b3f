#include "services/Services.hpp"

#include "daemon/Daemon.hpp"
#include "phone/SimulatedPhone.hpp"
#include "source/Error.hpp"

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

// The simulated phone as the library's classes see it.

using namespace oz;
using namespace oz::device;
using namespace oz::services;
using namespace oz::harness;

namespace {

const QString Radioctrl = "/pps/services/cellular/radioctrl/";
const QString MmsControl = "/pps/services/cds/cnice/mms_control";

struct Story
{
    const char *name;
    std::function<QObject *()> make;
    QString values; // of the phone as it is shipped
    QList<std::pair<QString, QString>> steps; // an order, and what it makes the object signal
};

void PrintTo(const Story &story, std::ostream *out)
{
    *out << story.name;
}

const Story Stories[] = {
    {"battery", [] { return new BatteryInfo; },
        "level=80 chargingState=Discharging present=true condition=OK fullChargeCapacity=2800 cycleCount=112 "
        "temperature=25.5 rxid=\"\"",
        {{"battery level 79", "level(79, Discharging) level(79, 3)"},
            {"battery plug", "level(79, Charging) level(79, 2)"},
            {"battery level 100", "level(100, Full) level(100, 4)"},
            {"battery level 40", "level(40, Charging) level(40, 2)"},
            {"battery temperature 45.1", "level(40, NotCharging) level(40, 1) temperature(45.1)"},
            {"battery temperature -0.07", "temperature(-0.07)"},
            {"battery temperature unknown", "level(40, Charging) level(40, 2) temperature(nan)"},
            {"battery temperature 20", "temperature(20)"}, {"battery wireless RX7", R"(rxid("RX7"))"},
            {"battery unplug", {}}, {"battery wireless", R"(level(40, Discharging) level(40, 3) rxid(""))"},
            {"battery condition bad", "condition(Bad) condition(2)"},
            {"battery remove",
                "level(-1, Discharging) level(-1, 3) present(false) condition(Unknown) condition(0) "
                "fullChargeCapacity(-1) cycleCount(-1) temperature(nan)"},
            {"battery insert",
                "level(40, Discharging) level(40, 3) present(true) condition(Bad) condition(2) "
                "fullChargeCapacity(2800) cycleCount(112) temperature(20)"}}},
    {"sdcard", [] { return new SdCardInfo; }, "state=Mounted activity=Idle",
        {{"sdcard busy", "activity(Busy) activity(2)"},
            {"sdcard unmount", "state(Unmounted) state(2) activity(Idle) activity(1)"},
            {"sdcard mount", "state(Mounted) state(1)"}}},
    {"display", [] { return new DisplayInfo(1); },
        "displayId=1 displayName=\"hdmi\" pixelSize=1920x1080 physicalSize=531x299 "
        "resolution=3615.82x3612.04 aspectType=Landscape attached=false detachable=true "
        "displayTechnology=Lcd wireless=false",
        {{"display attach 1", "attached(true)"},
            {"display rotate 1 90", R"(pixelSize(1080x1920) pixelSize({"height":1920,"width":1080}))"},
            {"display resize 1 640 480", R"(pixelSize(480x640) pixelSize({"height":640,"width":480}))"},
            {"display rotate 1 180", R"(pixelSize(640x480) pixelSize({"height":480,"width":640}))"},
            {"display add 2 miracast 320 200", {}}, {"display detach 1", "attached(false)"},
            {"display attach 1", "attached(true)"}, {"display remove 1", "attached(false)"}}},
    {"hardware", [] { return new HardwareInfo; },
        "pin=\"2A000001\" serialNumber=\"000100020003\" imei=\"004999010640000\" meid=\"A0000000000001\" "
        "hardwareId=\"KSL100-1\" deviceName=\"Simulated phone\" modelName=\"Kestrel\" "
        "modelNumber=\"KSL100\" isPhysicalKeyboardDevice=true hdmiConnector=Micro isTrackpadDevice=true "
        "hasPhysicalPhoneKeys=true hasPhysicalBackButton=true hasPhysicalMenuButton=true",
        {}},
    {"simcard", [] { return new SimCardInfo; },
        "state=Ready mobileCountryCode=\"001\" mobileNetworkCode=\"01\" "
        "serialNumber=\"8900100000000000001\" subscriberIdentifier=\"001010000000001\"",
        {{"simcard pin",
             R"(state(PinRequired) state(4) mobileCountryCode("") mobileNetworkCode("") )"
             R"(subscriberIdentifier(""))"},
            {"simcard remove", R"(state(NotDetected) state(0) serialNumber(""))"},
            {"simcard insert",
                R"(state(Ready) state(5) mobileCountryCode("001") mobileNetworkCode("01") )"
                R"(serialNumber("8900100000000000001") subscriberIdentifier("001010000000001"))"},
            {"simcard not-provisioned", "state(NotProvisioned) state(2)"},
            {"simcard unreadable",
                R"(state(ReadError) state(3) mobileCountryCode("") mobileNetworkCode("") )"
                R"(serialNumber("") subscriberIdentifier(""))"},
            {"simcard incompatible", R"(state(Incompatible) state(1) serialNumber("8900100000000000001"))"}}},
    {"radio", [] { return new CellularRadioInfo; },
        "poweredOn=true technologies=Gsm|Umts|Cdma1X|Evdo|Lte services=Emergency|Voice|E911Callback|Data|"
        "GenericAccessNetwork|ConcurrentVoiceData|DataGprs|DataEdge|DataUmts|DataHspa|DataHspaP|DataCdma|"
        "DataEvdo0|DataEvdoA|DataEhrpd|DataLte bands=Cdma0|CdmaI|Gsm850|Gsm900|Gsm1800|Gsm1900|UmtsI|UmtsII|"
        "UmtsV|UmtsVIII|LteIII|LteVII|LteXX enabledTechnologies=Gsm|Umts|Cdma1X|Evdo|Lte "
        "activeTechnologies=Lte networkCount=1 dataEnabled=true dataRoaming=false",
        {{"cellular-network home-cdma serve",
             "activeTechnologies(Cdma1X|Lte) activeTechnologies(20) networkCount(2)"},
            {"radio enable gsm,umts",
                "activeTechnologies(None) activeTechnologies(0) networkCount(0) "
                "enabledTechnologies(Gsm|Umts) enabledTechnologies(3)"},
            {"cellular-network abroad serve",
                "activeTechnologies(Umts) activeTechnologies(2) networkCount(1)"},
            {"radio data-roaming on", "dataRoaming(true)"},
            {"cellular-network partner serve", "dataRoaming(false)"},
            {"cellular-network partner suppress off", "dataRoaming(true)"},
            {"radio data off", "dataEnabled(false) dataRoaming(false)"},
            {"radio power off",
                "poweredOn(false) activeTechnologies(None) activeTechnologies(0) networkCount(0)"}}},
    {"primary_network", [] { return new CellularNetworkInfo; },
        "index=0 technology=Lte services=Emergency|Voice|Data|ConcurrentVoiceData|DataLte "
        "name=\"North Mobile\" mobileCountryCode=\"001\" mobileNetworkCode=\"01\" signalStrength=-85 "
        "roaming=false cellId=20481 locationAreaCode=0 trackingAreaCode=301 baseStationId=0 networkId=0 "
        "systemId=0 displayName=\"North\"",
        {{"cellular-network home-lte rssi -93", "signalStrength(-93)"},
            {"cellular-network home-cdma serve", {}}, {"cellular-network home-gsm rssi -70", {}},
            {"cellular-network home-gsm serve",
                "services(Emergency|Voice|Data|DataGprs|DataEdge) services(12547) "
                "signalStrength(-70) cellId(4097) locationAreaCode(77) trackingAreaCode(0) "
                "technology(Gsm) technology(1)"},
            {"simcard remove", "services(Emergency) services(1)"},
            {"cellular-network home-gsm roaming on", "roaming(true)"},
            {"cellular-network home-gsm suppress on", "roaming(false)"},
            {"cellular-network home-gsm operator West", R"(name("West") displayName("West"))"},
            {"radio power off",
                R"(services(None) services(0) name("") mobileCountryCode("") mobileNetworkCode("") )"
                R"(signalStrength(0) cellId(0) locationAreaCode(0) displayName("") technology(None) )"
                "technology(0)"}}},
    {"cdma_network", [] { return new CellularNetworkInfo(1); },
        "index=1 technology=Cdma1X services=None name=\"\" mobileCountryCode=\"\" mobileNetworkCode=\"\" "
        "signalStrength=0 roaming=false cellId=0 locationAreaCode=0 trackingAreaCode=0 baseStationId=0 "
        "networkId=0 systemId=0 displayName=\"North\"",
        {{"cellular-network home-cdma serve",
             "services(Emergency|Voice|E911Callback|DataCdma) services(131079) "
             R"(name("North Voice") mobileCountryCode("001") mobileNetworkCode("01") )"
             "signalStrength(-90) baseStationId(12) networkId(3) systemId(4101)"},
            {"cellular-network home-lte leave", R"(displayName("North Voice"))"}}},
    {"data_profile", [] { return new CellularDataInterface("internet"); },
        "name=\"internet\" valid=true alwaysOn=true accessControlled=false networkInterfaceName=\"rmnet0\" "
        "accessPointName=\"internet.example\" connectionState=Connected",
        {{"simcard pin", R"(connectionState(Disconnected) connectionState(0) networkInterfaceName(""))"},
            {"simcard ready", "connectionState(PendingConnect) connectionState(1)"},
            {"cellular-network abroad serve", "connectionState(Disconnected) connectionState(0)"},
            {"data-profile internet enabled off", "valid(false)"}}},
    {"wifidirect", [] { return new WiFiDirect; },
        "scanning=false enabled=true supported=true lastUpdate= connectionState=Disconnected "
        "networkInterfaceName=\"\" networkRole=Unknown networkSsid=\"\" networkOwnerHardwareAddress=\"\" "
        "networkOwnerIpAddress=\"\" networkPassword=\"\"",
        {{"wifi-direct enabled off", "enabled(false)"}, {"wifi-direct supported off", {}}}},
    {"miracast", [] { return new MiracastManager; },
        "hardwareAddress=\"\" connectionState=Disconnected deviceName=\"\" devicePixelSize=0x0 "
        "displayState=Stopped deviceCategory=Unknown deviceSubCategory=Unknown sessionId=\"\" "
        "stopReason=NotStopped status=Running isSupported=true",
        {{"miracast stop 5", "stopReason(ItPolicy) stopReason(4) status(Stopped)"},
            {"miracast start", "stopReason(NotStopped) stopReason(1) status(Running)"},
            {"miracast sink-goes tv", {}}}},
};

class PhoneTest : public DeviceTest, public ::testing::WithParamInterface<Story>
{
};

TEST_P(PhoneTest, AnEmptyFileMeansWhatTheShippedOneSaysAndARestartShowsNothingInBetween)
{
    auto daemon = std::make_unique<Daemon>(Configuration::simulated(), JsonNode::emptyMap());
    const std::unique_ptr<QObject> facility(GetParam().make());
    EXPECT_EQ(valuesOf(*facility), GetParam().values);
    SignalLog heard(facility.get());
    daemon.reset();
    daemon = std::make_unique<Daemon>(Configuration::simulated(), JsonNode::parseFile(OZ_PHONE_FILE));
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(valuesOf(*facility), GetParam().values);
}

TEST_P(PhoneTest, EachOrderIsSignalledAsWhatItChanges)
{
    const Daemon daemon(Configuration::simulated(),
        JsonNode::parse("{\"data-profile\": {\"connect-seconds\": 3600}}", "phone.json"));
    const std::unique_ptr<QObject> facility(GetParam().make());
    SignalLog heard(facility.get());
    for (const auto &[order, signalled] : GetParam().steps) {
        sim(order);
        EXPECT_EQ(heard.waitFor(signalled.count(u')')), signalled) << order.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Of, PhoneTest, ::testing::ValuesIn(Stories),
    [](const auto &story) { return std::string(story.param.name); });

using SimulatedPhoneTest = DeviceTest;

TEST_F(SimulatedPhoneTest, TheBatteryChargesUntilItIsFullAndRunsDownToNothing)
{
    const Daemon daemon(Configuration::simulated(),
        JsonNode::parse(R"({"battery": {"level": 97, "plugged": true, "charging-seconds-per-percent": 0.001,
            "discharging-seconds-per-percent": 0.001}})",
            "phone.json"));
    const BatteryInfo battery;
    EXPECT_EQ(battery.level(), 97);
    EXPECT_TRUE(waitUntil([&] { return battery.chargingState() == BatteryChargingState::Full; }));
    EXPECT_EQ(battery.level(), 100);
    sim("battery unplug");
    EXPECT_TRUE(waitUntil([&] { return battery.level() == 0; }));
    settle();
    EXPECT_EQ(battery.level(), 0);
    EXPECT_EQ(battery.chargingState(), BatteryChargingState::Discharging);
}

TEST_F(SimulatedPhoneTest, TheDeviceTakesANewNameAndSaysWhichProcessorsItHas)
{
    const Daemon daemon(Configuration::simulated(),
        JsonNode::parse(R"({"hardware": {"processors": [{"model": "Fast", "mhz": 2000}, {}], "meid": null,
            "hardware-id": "other", "keyboard": "none", "hdmi": "none"}})",
            "phone.json"));
    const HardwareInfo hardware;
    sim("hardware name Mine");
    EXPECT_EQ(hardware.deviceName(), "Mine");
    EXPECT_EQ(hardware.processorCount(), 2);
    EXPECT_EQ(hardware.processorModel(0), "Fast");
    EXPECT_EQ(hardware.processorSpeed(0), 2000);
    EXPECT_EQ(hardware.processorSpeed(1), 1500);
    EXPECT_EQ(hardware.meid(), QString());
    EXPECT_FALSE(hardware.isTrackpadDevice());
    EXPECT_FALSE(hardware.isPhysicalKeyboardDevice());
    EXPECT_EQ(hardware.hdmiConnector(), HdmiConnector::None);
    QFile identifiers(root.file("/pps/services/private/deviceproperties"));
    ASSERT_TRUE(identifiers.open(QIODevice::ReadOnly));
    EXPECT_FALSE(identifiers.readAll().contains("MEID")) << "what is not known is not published";
}

TEST_F(SimulatedPhoneTest, APeerMayHaveAnyName)
{
    const QString name =
        "\"\\',{}\n\t\x01" + QString(QChar(0x202e)) + QString(1, QChar(0)) + QString(4096, 'x');
    const QByteArray peer = QJsonDocument(QJsonObject{{"name", name}}).toJson();
    const Daemon daemon(Configuration::simulated(),
        JsonNode::parse(R"({"wifi-direct": {"scan-seconds": 0, "peers": {"\u202e\"\u0000": )" + peer + "}}}",
            "phone.json"));
    const WiFiDirect wifi;
    ask("/pps/services/wifi_p2p/manager/control", {{"msg", "wifi_p2p_scan_and_listen"}});
    EXPECT_TRUE(waitUntil([&] { return wifi.name("02:00:00:00:01:01") == name; }));
}

TEST_F(SimulatedPhoneTest, IdentifiersAreForOwnerAndGroupOnly)
{
    const Daemon daemon(Configuration::simulated(), JsonNode::emptyMap());
    const std::tuple<QString, mode_t> rows[] = {
        {"/pps/services/private/deviceproperties", 0640},
        {"/pps/services/deviceproperties", 0644},
        {"/pps/services/hw_info/inventory", 0644},
        {"/pps/services/cellular/uicc/card0/status_private", 0640},
        {"/pps/services/cellular/uicc/card0/status_restricted", 0640},
        {Radioctrl + "status_public", 0644},
        {Radioctrl + "status_persistent", 0644},
        {Radioctrl + "status_cell_public", 0644},
        {Radioctrl + "status_cell_private", 0640},
        {Radioctrl + "status_cell_cdma_public", 0644},
        {Radioctrl + "status_cell_cdma_private", 0640},
        {"/pps/services/rum/csm/status_public", 0644},
        {"/pps/services/cds/cnice/status", 0644},
        {"/pps/services/led/status", 0644},
        {"/pps/services/led/control", 0666},
        {"/pps/services/vibrator", 0666},
        {MmsControl, 0666},
        {"/pps/services/cds/cnice/tethering_control", 0},
        {"/pps/services/wifi_p2p/manager/status", 0640},
        {"/pps/services/wifi_p2p/manager/control", 0660},
        {"/pps/services/miracast/status", 0644},
        {"/pps/services/miracast/sinks", 0644},
        {"/pps/services/miracast/control", 0666},
    };
    for (const auto &[path, mode] : rows)
        EXPECT_EQ(root.mode(path), mode) << path.toStdString();
}

class DataProfileTest : public ServicesTest
{
protected:
    DataProfileTest() : ServicesTest("{\"data-profile\": {\"connect-seconds\": 1}}") { }

    using Result = CellularConnectionRequestResult;
    const QString connected = "connectionState(PendingConnect) connectionState(1) connectionState(Connected) "
                              R"(connectionState(2) networkInterfaceName("rmnet1"))";
    const QString disconnected =
        R"(connectionState(Disconnected) connectionState(0) networkInterfaceName(""))";
};

TEST_F(DataProfileTest, IsConnectedUntilItsLastUserLeavesOrMobileDataEnds)
{
    CellularDataInterface mms("mms");
    CellularDataInterface other("mms");
    SignalLog heard(&mms);
    EXPECT_EQ(mms.requestConnect(), Result::Requested);
    EXPECT_EQ(heard.waitFor(5), connected);
    EXPECT_EQ(other.requestConnect(), Result::Requested);
    EXPECT_EQ(mms.requestDisconnect(), Result::Requested);
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(other.requestDisconnect(), Result::Requested);
    EXPECT_EQ(heard.waitFor(3), disconnected);

    // The client of this request has gone with its answer; the connection is there for who knows its id.
    const QVariantMap answer = ask(MmsControl, {{"msg", "connect"}, {"id", 7}});
    EXPECT_EQ(answer.value("id"), 7);
    EXPECT_EQ(heard.waitFor(5), connected);
    const auto disconnect = [](const QVariant &data) {
        return ask(MmsControl, {{"msg", "disconnect"}, {"id", 8}, {"dat", data}}).value("errstr").toString();
    };
    EXPECT_EQ(disconnect(QVariantMap{{"connect_id", "1"}}), "this profile has no such connection");
    EXPECT_EQ(disconnect("none"), "this profile has no such connection");
    EXPECT_EQ(ask(MmsControl, {{"msg", "reconnect"}}),
        (QVariantMap{{"res", "reconnect"}, {"err", 22},
            {"errstr", "unknown request 'reconnect'; known are connect, disconnect"}}));
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(disconnect(answer.value("dat")), QString());
    EXPECT_EQ(heard.waitFor(3), disconnected);

    EXPECT_EQ(mms.requestConnect(), Result::Requested);
    EXPECT_EQ(heard.waitFor(5), connected);
    sim("radio power off");
    EXPECT_EQ(heard.waitFor(3), disconnected);
    EXPECT_EQ(mms.requestDisconnect(), Result::InternalError) << "there is no such connection any more";
    EXPECT_EQ(ask(MmsControl, {{"msg", "connect"}}),
        (QVariantMap{{"res", "connect"}, {"err", 100}, {"errstr", "the radio is off"}}));
    sim("radio power on");
    sim("radio data off");
    EXPECT_EQ(mms.requestConnect(), Result::InternalError);
    EXPECT_EQ(heard.settled(), "");
}

TEST_F(DataProfileTest, RefusesAsItIsToldTo)
{
    const std::tuple<const char *, QStringList, int> rows[] = {
        {"enterprise", {}, Result::NotPossible},
        {"enterprise", {"enterprise permitted on"}, Result::Requested},
        {"legacy", {}, Result::InternalError},
        {"legacy", {"legacy enabled on"}, Result::Requested},
        {"mms", {"mms fail-with 13"}, Result::NotPossible},
        {"mms", {"mms fail-with 5"}, Result::InternalError},
        {"mms", {"mms die-on-request"}, Result::InternalError},
        {"mms", {"mms answer-rubbish"}, Result::InternalError},
        {"mms", {"mms fail-with 13", "mms answer-late 20"}, Result::Requested},
        {"mms", {}, Result::Requested},
        {"nobody", {}, Result::InvalidInterface},
    };
    for (const auto &[name, orders, result] : rows) {
        for (const QString &order : orders)
            sim("data-profile " + order);
        CellularDataInterface profile(name);
        EXPECT_EQ(profile.requestConnect(), result) << name << orders.join(' ').toStdString();
    }
    EXPECT_EQ(runWithoutRights([] { return CellularDataInterface("tethering").requestConnect(); }),
        Result::PermissionDenied);
    log.take();

    sim("data-profile mms never-answer");
    PpsObject waiting(MmsControl);
    ASSERT_TRUE(waiting.open(PpsOpenMode::PublishSubscribe) && waiting.write("msg::connect\n"));
    EXPECT_FALSE(ask(MmsControl, {{"msg", "connect"}}).contains("err")) << "only one request goes unanswered";
    EXPECT_EQ(waiting.read(), QByteArray());
    EXPECT_EQ(waiting.error(), EAGAIN);
}

TEST_F(SimulatedPhoneTest, AWrongFileIsToldWithLineAndKeyAndWithoutIdentifiers)
{
    const auto problemOf = [](const std::function<JsonNode()> &file) {
        try {
            StateStore store;
            const SimulatedPhone phone(file(), phoneParts(), store);
        } catch (const Error &error) {
            return QString(error.what());
        }
        return QString();
    };
    const std::tuple<QByteArray, QString> files[] = {
        {"{\n  // a comment\n  \"sdcard\": {\n    \"mounted\": 3 /* another */\n  }\n}",
            "4: sdcard.mounted: expected true or false, found 3"},
        {"{\"sdcard\": {\"mountd\": true}}", "1: sdcard.mountd: unknown key; known here are mounted, busy"},
        {"{\"sdcard\": []}", "1: sdcard: expected a map, found a list"},
        {"{\"sdcard\": {\"mounted\": false,\n\"busy\": true}}",
            "2: sdcard.busy: a card that is not mounted cannot be busy"},
        {"{\"sdcard\": {\"busy\": true,\n\"busy\": true}}", "2: there are two of 'busy'"},
        {"{\n\n\"sdcard\" 1}", "3: Missing a colon after a name of object member."},
        {"", "1: The document is empty."},
        {"[]", "1: expected a map, found a list"},
        {"{} {}", "1: The document root must not be followed by other values."},
    };
    for (const auto &[text, problem] : files)
        EXPECT_EQ(problemOf([&text = text] { return JsonNode::parse(text, "phone.json"); }),
            "phone.json:" + problem);
    EXPECT_TRUE(problemOf([] { return JsonNode::parseFile("/no/file.json"); }).startsWith("/no/file.json: "));
    EXPECT_EQ(problemOf([] { return JsonNode::parseFile(OZ_PHONE_FILE); }), QString());
    const std::tuple<QByteArray, QString> sections[] = {
        {R"("battery": {"level": 101})", "battery.level: expected a whole number from 0 to 100, found 101"},
        {R"("battery": {"condition": "fine"})",
            "battery.condition: expected one of ok, bad, unknown, found \"fine\""},
        {R"("led": {"on-seconds": 0})", "led.on-seconds: expected a number from 0.001 to 60, found 0"},
        {R"("vibration": {"present": 1})", "vibration.present: expected true or false, found 1"},
        {R"("hardware": {"imei": 4999010640000})", "hardware.imei: expected text or null"},
        {R"("hardware": {"processors": [{"mhz": 0}]})",
            "hardware.processors[0].mhz: expected a whole number from 1 to 100000, found 0"},
        {R"("hardware": {"processors": [1500]})", "hardware.processors[0]: expected a map, found 1500"},
        {R"("simcard": {"imsi": "00101000000000x"})", "simcard.imsi: expected 6 to 15 digits or null"},
        {R"("simcard": {"mcc": "1"})", "simcard.mcc: expected 3 digits or null, found \"1\""},
        {R"("simcard": {"pin": "1234"})",
            "simcard.pin: unknown key; known here are state, mcc, mnc, iccid, imsi"},
        {R"("radio": {"technologies": ["gsm"], "enabled-technologies": ["gsm", "lte"]})",
            "radio.enabled-technologies[1]: expected one of gsm, found \"lte\""},
        {R"("radio": {"bands": {"gsm": [900, 700]}})",
            "radio.bands.gsm[1]: expected one of 850, 900, 1800, 1900, found 700"},
        {R"("cellular-network": {"networks": {"a": {"technology": "gsm", "tac": 1}}})",
            "cellular-network.networks.a.tac: unknown key; known here are technology, operator, "
            "display-name, mcc, mnc, rssi, services, roaming, suppress, cell-id, lac"},
        {R"("cellular-network": {"networks": {"a": {"mnc": "1"}}})",
            "cellular-network.networks.a.mnc: expected two or three digits, found \"1\""},
        {R"("cellular-network": {"serving": ["home-lte", "home-gsm"]})",
            "cellular-network.serving: home-lte and home-gsm cannot serve at once; one beside another is "
            "CDMA 1X"},
        {R"("cellular-network": {"networks": {"a": {}}, "serving": ["b"]})",
            "cellular-network.serving[0]: expected one of a, found \"b\""},
        {R"("data-profile": {"profiles": {"a/b": {}}})",
            "data-profile.profiles.a/b: no name for a profile; expected letters, digits, '-' and '_'"},
        {R"("data-profile": {"profiles": {"a": {"control-mode": "0888"}}})",
            "data-profile.profiles.a.control-mode: expected a file mode such as \"0666\", found \"0888\""},
        {R"("data-profile": {"profiles": {"a": {"permitted": false}}})",
            "data-profile.profiles.a.permitted: everyone may use a profile that is not access-controlled"},
        {R"("wifi-direct": {"address": "02-00-00-00-00-01"})",
            "wifi-direct.address: expected a hardware address such as \"02:00:00:00:00:01\", found "
            "\"02-00-00-00-00-01\""},
        {R"("wifi-direct": {"password": "seven-7"})",
            "wifi-direct.password: expected 8 to 63 characters of ASCII"},
        {R"("wifi-direct": {"peers": {"a": {"address": "0a:00:00:00:00:02"}, "b": {"address": "0A:00:00:00:00:02"}}})",
            "wifi-direct.peers.b.address: is that of a"},
        {R"("wifi-direct": {"peers": {"a": {"wps": ["nfc"]}}})",
            "wifi-direct.peers.a.wps[0]: expected one of push-button, random-pin, preset-pin, found \"nfc\""},
        {R"("miracast": {"sinks": {"a": {"address": "0a:00:00:00:00:02"}, "b": {"address": "0A:00:00:00:00:02"}}})",
            "miracast.sinks.b.address: is that of a"},
        {R"("miracast": {"sinks": {"a": {"pin": 1234}}})", "miracast.sinks.a.pin: expected text or null"},
    };
    for (const auto &[text, problem] : sections) {
        const QByteArray file = "{\n" + text + "}";
        EXPECT_EQ(problemOf([&] { return JsonNode::parse(file, "phone.json"); }), "phone.json:2: " + problem);
    }
}

// The state of the phone, as the arguments that would set it.
TEST_F(SimulatedPhoneTest, TellsWhatItIsLikeToWhoFollowsIt)
{
    const Daemon daemon(Configuration::simulated(), JsonNode::emptyMap());
    const QString path = "/pps/system/ozdeviced/phone";
    const auto look = [&] { return attributesOf(path); };
    EXPECT_EQ(root.mode(path), 0600u);
    QVariantMap seen = look();
    // Told again what it is, nothing of it changes.
    const QVariantMap parts = seen.value("values").toMap();
    int told = 0;
    for (auto part = parts.begin(); part != parts.end(); ++part) {
        const QVariantMap instances = part->toMap();
        for (auto instance = instances.begin(); instance != instances.end(); ++instance) {
            const QVariantMap values = instance->toMap();
            for (auto value = values.begin(); value != values.end(); ++value) {
                const bool isSwitch = value->typeId() == QMetaType::Bool;
                QStringList words{part.key(), instance.key(), value.key()};
                words.removeAll(QString());
                // A verb without arguments that is so; else one with "on", "off" or a word.
                const QString line = words.join(' ');
                const QString word = isSwitch ? (value->toBool() ? "on" : "off") : value->toString();
                const QString problem = simProblem(line + ' ' + word);
                // Some profiles cannot be told that.
                if (isSwitch && value->toBool() && !problem.isEmpty() && !problem.contains("everyone may")) {
                    EXPECT_EQ(simProblem(line), QString()) << line.toStdString();
                } else if (!isSwitch && !word.contains(' ')) {
                    EXPECT_EQ(problem, QString()) << line.toStdString();
                }
                ++told;
            }
        }
    }
    EXPECT_GT(told, 60);
    EXPECT_EQ(look().value("values"), seen.value("values"));

    const auto speaker = [&] {
        for (const QVariant &each : seen.value("neighbours").toList()) {
            if (each.toMap().value("name") == "speaker")
                return each.toMap().value("in-range").toBool();
        }
        return false;
    };
    EXPECT_FALSE(speaker());
    sim("wifi-direct peer-appears speaker");
    EXPECT_TRUE(waitUntil([&] {
        seen = look();
        return speaker();
    }));
    const QVariant description = seen.value("description");
    // A choice less, which is published before the answer where that is asked for.
    const QVariantMap order{
        {"facility", "display"}, {"verb", "remove"}, {"arguments", QStringList{"1"}}, {"publish", true}};
    EXPECT_EQ(daemonProblem("sim", order), "");
    EXPECT_NE(look().value("description"), description);
}

TEST_F(SimulatedPhoneTest, AnOrderThatItCannotFollowIsToldWithWhatWasExpected)
{
    const Daemon daemon(Configuration::simulated(), JsonNode::emptyMap());
    const std::tuple<QString, QString> rows[] = {
        {"battery level much", "battery level: expected a whole number from 0 to 100, found 'much'"},
        {"battery temperature 300",
            "battery temperature: expected a number from -100 to 200 or unknown, found '300'"},
        {"battery level", "battery level takes PERCENT, not 0 arguments"},
        {"sdcard insert now", "sdcard insert takes no arguments, not 1 arguments"},
        // A former name works too.
        {"sdcard mount now", "sdcard mount takes no arguments, not 1 arguments"},
        {"radio power maybe", "radio power: expected one of on, off, found 'maybe'"},
        {"simcard remove", ""},
        {"radio enable gsm", ""},
        {"cellular-network home-lte serve", "cellular-network home-lte serve: lte is not enabled"},
        {"cellular-network nowhere serve",
            "cellular-network has no 'nowhere'; it has home-lte, home-gsm, home-umts, home-cdma, abroad, "
            "partner"},
        {"cellular-network home-lte",
            "cellular-network home-lte wants one of serve, leave, operator, rssi, roaming, suppress, "
            "kill-service, start-service"},
        {"data-profile mms permitted off",
            "data-profile mms permitted: everyone may use a profile that is not access-controlled"},
        {"data-profile mms fail-with 0",
            "data-profile mms fail-with: expected a whole number from 1 to 4095, found '0'"},
        {"wifi-direct peer-joins tv", "wifi-direct peer-joins: the phone owns no group"},
        {"wifi-direct peer-leaves tv", "wifi-direct peer-leaves: tv is not connected"},
        {"wifi-direct peer-goes radio",
            "wifi-direct peer-goes: expected one of tv, laptop, printer, camera, speaker, found 'radio'"},
        {"wifi-direct fail-next fly 5",
            "wifi-direct fail-next: expected one of scan, connect, cancel-connect, start-session, "
            "stop-session, get-ip-address, found 'fly'"},
        {"miracast fail-next scan 5",
            "miracast fail-next: expected a whole number from -9999 to -1, found '5'"},
        {"miracast stop 0", "miracast stop: expected a whole number from 1 to 9, found '0'"},
    };
    for (const auto &[order, problem] : rows)
        EXPECT_EQ(simProblem(order), problem) << order.toStdString();
}

} // namespace
