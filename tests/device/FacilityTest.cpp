#include "device/Objects.hpp"
#include "harness/Testing.hpp"

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/NetworkDataUsage.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QRegularExpression>
#include <QSet>
#include <QThread>

#include <csignal>

using namespace oz::device;
using namespace oz::harness;

// Requirements on each facility that keeps the values of state objects.

namespace {

struct Source
{
    QString path;
    QByteArray text;
    QString lost; // the signals of a reading that fails
    QStringList warnings; // where the object is gone, and where it is malformed
    QByteArray malformed = "malformed\n";
    QString stillLost = {}; // the signals of one more reading that fails
};

struct Facility
{
    const char *name;
    std::function<QObject *()> make;
    QString values;
    QString defaults;
    QStringList notOpened; // the warnings where nothing is there
    QList<Source> sources;
};

// How many signals a log tells of.
qsizetype countOf(const QString &signalled)
{
    return signalled.count(u')');
}

void PrintTo(const Facility &facility, std::ostream *out)
{
    *out << facility.name;
}

const QString Radio = "/pps/services/cellular/radioctrl/";

const Facility Facilities[] = {
    {"SdCardInfo", [] { return new SdCardInfo; }, "state=Mounted activity=Busy",
        "state=Unknown activity=Unknown", {"SdCardInfo failed to open pps, error 2 ."},
        // A reading that fails changes nothing here.
        {{"/pps/system/filesystem/removable/sdcard", "mounted:b:true\nbusy:b:true\n", {},
            {"SdCardInfo failed to read pps data, error 2 .", "SdCardInfo failed to parse pps data."}}}},
    {"BatteryInfo", [] { return new BatteryInfo; },
        "level=80 chargingState=Charging present=true condition=OK fullChargeCapacity=2900 cycleCount=120 "
        "temperature=25.5 rxid=\"7F01\"",
        "level=-1 chargingState=Unknown present=false condition=Unknown fullChargeCapacity=-1 cycleCount=-1 "
        "temperature=nan rxid=\"\"",
        {"[BatteryInfo] Unable to open battery manager PPS channel"},
        {{"/pps/system/BattMgr/status", BatteryText,
            "level(-1, Unknown) level(-1, 0) present(false) condition(Unknown) condition(0) "
            R"(fullChargeCapacity(-1) cycleCount(-1) temperature(nan) rxid(""))",
            {"[BatteryInfo] Could not read pps. error: \"No such file or directory\"",
                "[BatteryInfo] Could read, but not decode pps"},
            "malformed\n", "temperature(nan)"}}},
    {"SimCardInfo", [] { return new SimCardInfo; },
        "state=Ready mobileCountryCode=\"310\" mobileNetworkCode=\"26\" serialNumber=\"8944500102\" "
        "subscriberIdentifier=\"31026\"",
        "state=NotDetected mobileCountryCode=\"\" mobileNetworkCode=\"\" serialNumber=\"\" "
        "subscriberIdentifier=\"\"",
        {"SimCardInfo - failed to open private PPS object:" + Missing,
            "SimCardInfo - failed to open restricted PPS object:" + Missing},
        {{"/pps/services/cellular/uicc/card0/status_private", SimCardText,
             R"(state(NotDetected) state(0) mobileCountryCode("") mobileNetworkCode("") )"
             R"(serialNumber(""))",
             {"SimCardInfo - failed to read private PPS data:" + Missing,
                 "SimCardInfo - failed to decode private PPS data"}},
            {"/pps/services/cellular/uicc/card0/status_restricted", "@status_restricted\nimsi::31026\n",
                R"(subscriberIdentifier(""))",
                {"SimCardInfo - failed to read restricted PPS data:" + Missing,
                    "SimCardInfo - failed to decode restricted PPS data"}}}},
    {"CellularRadioInfo", [] { return new CellularRadioInfo; },
        "poweredOn=true technologies=Lte services=Voice bands=UmtsI enabledTechnologies=Gsm "
        "activeTechnologies=Umts networkCount=1 dataEnabled=true dataRoaming=true",
        "poweredOn=false technologies=None services=None bands=None enabledTechnologies=None "
        "activeTechnologies=None networkCount=0 dataEnabled=false dataRoaming=false",
        {"CellularRadioInfo - failed to open public PPS object:" + Missing},
        {{Radio + "status_public", RadioText,
             "poweredOn(false) activeTechnologies(None) activeTechnologies(0) networkCount(0)",
             {"CellularRadioInfo - failed to read public PPS data:" + Missing,
                 "CellularRadioInfo - failed to decode public PPS data"}},
            {Radio + "status_persistent", R"(configured_technologies:json:{"enabled":["gsm","6g"]})",
                "enabledTechnologies(None) enabledTechnologies(0)",
                {"CellularRadioInfo - failed to read persistent PPS data:" + Missing,
                    "CellularRadioInfo - failed to decode persistent PPS data"}},
            {"/pps/services/cds/cnice/status",
                "@status\ndata_services_status::ON\ndata_roaming_status::ROAMING\n",
                "dataEnabled(false) dataRoaming(false)",
                {"CellularRadioInfo - failed to read data services PPS data:" + Missing,
                    "CellularRadioInfo - failed to decode data services PPS data"},
                "data_services_status:n:one\n"}}},
    {"CellularNetworkInfo", [] { return new CellularNetworkInfo; },
        "index=0 technology=Gsm services=Emergency name=\"North\" mobileCountryCode=\"310\" "
        "mobileNetworkCode=\"26\" signalStrength=-71 roaming=true cellId=1 locationAreaCode=2 "
        "trackingAreaCode=3 baseStationId=4 networkId=5 systemId=6 displayName=\"Mobile\"",
        "index=0 technology=None services=None name=\"\" mobileCountryCode=\"\" mobileNetworkCode=\"\" "
        "signalStrength=0 roaming=false cellId=0 locationAreaCode=0 trackingAreaCode=0 baseStationId=0 "
        "networkId=0 systemId=0 displayName=\"\"",
        {"CellularRadioInfo - failed to open public PPS object:" + Missing,
            "CellularNetworkInfo - failed to open settings PPS object:" + Missing},
        {{Radio + "status_public", R"(network_technology:json:["gsm"])", {}, {}},
            {Radio + "status_persistent", "", {}, {}}, {"/pps/services/cds/cnice/status", "", {}, {}},
            {Radio + "status_cell_public", CellText,
                R"(services(None) services(0) name("") mobileCountryCode("") mobileNetworkCode("") )"
                "signalStrength(0) roaming(false)",
                {"CellularNetworkInfo - failed to read public PPS data:" + Missing,
                    "CellularNetworkInfo - failed to decode public PPS data"}},
            {Radio + "status_cell_private",
                R"(serving_network:json:{"cell_id":1,"lac":2,"tac":3,"bid":4,"nid":5,"sid":"6"})",
                "cellId(0) locationAreaCode(0) trackingAreaCode(0) baseStationId(0) networkId(0) "
                "systemId(0)",
                {"CellularNetworkInfo - failed to read private PPS data:" + Missing,
                    "CellularNetworkInfo - failed to decode private PPS data"}},
            {"/pps/services/rum/csm/status_public", "network_name::Mobile\n", R"(displayName(""))",
                {"failed to read raw data:" + Missing, "failed to decode data"}}}},
    {"CellularDataInterface", [] { return new CellularDataInterface("web"); },
        "name=\"web\" valid=true alwaysOn=true accessControlled=true networkInterfaceName=\"rmnet0\" "
        "accessPointName=\"internet\" connectionState=Connected",
        "name=\"web\" valid=false alwaysOn=false accessControlled=false networkInterfaceName=\"\" "
        "accessPointName=\"\" connectionState=Disconnected",
        {"CellularDataInterface - failed to open status PPS object:" + Missing},
        {{"/pps/services/cds/cnice/status",
            R"(web:json:{"enabled":true,"always_on":true,"access_controlled":true,"active":true,"connected":true,"net_if":"rmnet0","apn":"internet"})",
            "valid(false) alwaysOn(false) accessControlled(false) connectionState(Disconnected) "
            R"(connectionState(0) networkInterfaceName("") accessPointName(""))",
            {"CellularDataInterface - failed to read status PPS data:" + Missing,
                "CellularDataInterface - failed to decode status PPS data"},
            "web:json:{\n"}}},
    {"WiFiDirect", [] { return new WiFiDirect; },
        "scanning=true enabled=true supported=true lastUpdate= connectionState=Connected "
        "networkInterfaceName=\"p2p0\" networkRole=Client networkSsid=\"DIRECT-1\" "
        "networkOwnerHardwareAddress=\"02:00\" networkOwnerIpAddress=\"10.0.0.1\" "
        "networkPassword=\"secret\"",
        "scanning=false enabled=false supported=true lastUpdate= connectionState=Unknown "
        "networkInterfaceName=\"\" networkRole=Unknown networkSsid=\"\" networkOwnerHardwareAddress=\"\" "
        "networkOwnerIpAddress=\"\" networkPassword=\"\"",
        {"WiFiDirect: Unable to locate WiFiDirect PPS channel."},
        // A reading that fails changes nothing here.
        {{"/pps/services/wifi_p2p/manager/status",
            "@status\nscanning:b:true\n"
            R"(connection:json:{"status":"connected","network_if":"p2p0","role":"client","ssid":"DIRECT-1","go_mac_addr":"02:00","go_ip_addr":"10.0.0.1","password":"secret"})",
            {},
            {"WiFiDirect: Unable to read status. ( \"No such file or directory\" )",
                "WiFiDirect: Unable to decode status message."}}}},
    {"MiracastManager", [] { return new MiracastManager; },
        "hardwareAddress=\"02:00\" connectionState=Connected deviceName=\"TV\" devicePixelSize=1280x720 "
        "displayState=Paused deviceCategory=Display deviceSubCategory=Television sessionId=\"s1\" "
        "stopReason=NotStopped status=Running isSupported=true",
        "hardwareAddress=\"\" connectionState=Unknown deviceName=\"\" devicePixelSize=0x0 "
        "displayState=Unknown deviceCategory=Unknown deviceSubCategory=Unknown sessionId=\"\" "
        "stopReason=Unknown status=Unknown isSupported=true",
        {"MiracastManager: Unable to open hw_info"},
        // A reading that fails changes nothing here.
        {{"/pps/services/hw_info/inventory", "Miracast_Supported::Yes\n", {}, {}},
            {"/pps/services/miracast/status",
                "@status\nsink_state::CONNECTED\nsession::PAUSED\nsession_id::s1\nservice_status::RUNNING\n"
                R"(sink_device:json:{"name":"TV","mac":"02:00","type":"7-0050F204-1"})"
                "\nservice_stop_reason:n:0\n"
                R"(sink_resolution:json:{"width":1280,"height":720})",
                {},
                QStringList(2, "MiracastManager::onStatusReadyRead - Unable to decode status message.")}}},
};

class FacilityTest : public DeviceTest, public ::testing::WithParamInterface<Facility>
{
protected:
    void placeAll()
    {
        for (const Source &source : GetParam().sources)
            root.place(source.path, source.text);
    }
};

TEST_P(FacilityTest, AnswersAtOnceWithWhatIsThereAndSignalsNothing)
{
    placeAll();
    const std::unique_ptr<QObject> facility(GetParam().make());
    SignalLog heard(facility.get());
    EXPECT_EQ(valuesOf(*facility), GetParam().values);
    EXPECT_EQ(heard.settled(), "");
}

TEST_P(FacilityTest, WithoutItsObjectsItKeepsTheDefaultsForGood)
{
    const std::unique_ptr<QObject> facility(GetParam().make());
    EXPECT_EQ(log.take(), GetParam().notOpened);
    SignalLog heard(facility.get());
    placeAll();
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(valuesOf(*facility), GetParam().defaults);
}

TEST_P(FacilityTest, AReadingThatFailsGivesTheDefaultsOrChangesNothingUntilTheNextGoodOne)
{
    placeAll();
    const std::unique_ptr<QObject> facility(GetParam().make());
    SignalLog heard(facility.get());
    for (const Source &source : GetParam().sources) {
        if (source.warnings.isEmpty())
            continue;
        root.remove(source.path);
        ASSERT_TRUE(waitUntil([&] { return log.categories().size() % 2 == 1; })) << source.path.toStdString();
        EXPECT_EQ(heard.settled(), source.lost);
        root.place(source.path, source.malformed);
        ASSERT_TRUE(waitUntil([&] { return log.categories().size() % 2 == 0; })) << source.path.toStdString();
        EXPECT_EQ(log.take(), source.warnings);
        EXPECT_EQ(heard.settled(), source.stillLost);
        root.place(source.path, source.text);
        const QString found = heard.waitFor(countOf(source.lost));
        EXPECT_EQ(heard.settled(), "");
        EXPECT_EQ(countOf(found), countOf(source.lost));
        EXPECT_EQ(valuesOf(*facility), GetParam().values);
        // Each signal, but for the integer twins, tells the value of its own property.
        static const QRegularExpression parts(R"((\w+)\(([^,)]*))");
        QSet<QString> told;
        for (const QRegularExpressionMatch &match : parts.globalMatch(found)) {
            const QString name = match.captured(1);
            const bool isTwin = std::exchange(told, told | QSet{name}).contains(name);
            EXPECT_TRUE(isTwin || GetParam().values.contains(name + "=" + match.captured(2)))
                << found.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Each, FacilityTest, ::testing::ValuesIn(Facilities),
    [](const auto &facility) { return std::string(facility.param.name); });

TEST(Facilities, ASlotOfAnySignalMayDestroyThoseThatFallBackToTheirDefaults)
{
    LogCapture log;
    for (const Facility &facility : Facilities) {
        const DeviceRoot root;
        for (const Source &source : facility.sources) {
            for (qsizetype last = 1; last <= countOf(source.lost); ++last) {
                for (const Source &each : facility.sources)
                    root.place(each.path, each.text);
                EXPECT_TRUE(endsWithSignal(last, facility.make(), [&] { root.remove(source.path); }))
                    << source.path.toStdString() << last;
            }
        }
    }
}

#ifdef OZ_ASSERTIONS

template <typename Class>
void expectToStayOnItsThread()
{
    const std::string name = Class::staticMetaObject.className();
    const auto move = [](bool withParent) {
        QThread other;
        QObject parent;
        auto *object = new Class(withParent ? &parent : nullptr);
        (withParent ? &parent : object)->moveToThread(&other);
    };
    for (const bool withParent : {false, true})
        EXPECT_EXIT(
            move(withParent), ::testing::KilledBySignal(SIGABRT), name + ": an object stays on the thread");
}

template <typename... Classes>
void expectAllToStayOnTheirThreads()
{
    (..., expectToStayOnItsThread<Classes>());
}

TEST(Facilities, AnObjectThatIsMovedToAnotherThreadEndsTheProgramWithItsClassAndTheRule)
{
    const DeviceRoot root;
    expectAllToStayOnTheirThreads<BatteryInfo, CellularDataInterface, CellularNetworkInfo, CellularRadioInfo,
        DeviceInfo, DisplayInfo, HardwareInfo, Led, MiracastManager, NetworkDataUsage, SdCardInfo,
        SimCardInfo, VibrationController, WiFiDirect>();
}

#endif

} // namespace
