#include "common/Testing.hpp"

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/HdmiConnector.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>

#include <QRegularExpression>
#include <QSet>

using namespace oz::device;
using namespace oz::testing;

// What holds for each facility that keeps the values of state objects.

namespace {

struct Source
{
    QString path;
    QByteArray text;
    QStringList lost; // the signals of a reading that fails
    QStringList warnings; // where the object is gone, and where it is malformed
    QByteArray malformed = "malformed\n";
    QStringList stillLost = {}; // the signals of one more reading that fails
};

struct Facility
{
    const char *name;
    std::function<QObject *()> make;
    QString values;
    QString defaults;
    QStringList notOpened; // the warnings where nothing is there
    QList<Source> sources;
    QString declarations;
};

void PrintTo(const Facility &facility, std::ostream *out)
{
    *out << facility.name;
}

const QString Missing = "  \"No such file or directory\"";
const QString Radio = "/pps/services/cellular/radioctrl/";

const Facility Facilities[] = {
    {"SdCardInfo", [] { return new SdCardInfo; }, "state=Mounted activity=Busy",
        "state=Unknown activity=Unknown", {"SdCardInfo failed to open pps, error 2 ."},
        // A reading that fails changes nothing here.
        {{"/pps/system/filesystem/removable/sdcard", "mounted:b:true\nbusy:b:true\n", {}, {}}},
        "stateChanged(~SdCardState::Type) activityChanged(~SdCardActivity::Type) stateChanged(int) "
        "activityChanged(int) ~SdCardState::Type state ~SdCardActivity::Type activity"},
    {"BatteryInfo", [] { return new BatteryInfo; },
        "level=80 chargingState=Charging present=true condition=OK fullChargeCapacity=2900 cycleCount=120 "
        "temperature=25.5 rxid=\"7F01\"",
        "level=-1 chargingState=Unknown present=false condition=Unknown fullChargeCapacity=-1 cycleCount=-1 "
        "temperature=nan rxid=\"\"",
        {"[BatteryInfo] Unable to open battery manager PPS channel"},
        {{"/pps/system/BattMgr/status", R"(@status
SystemInfo:json:{"ChargingState":"CC"}
BatteryInfo:json:{"ActiveBattery":1,"BatteryStatus":[{},{"StateOfCharge":80,"BatteryPresent":"YES","StateOfBattery":"OK","FullChargeCap":2900,"CycleCount":120,"Temperature":2550}]}
WlcSourceInfo:json:{"WlcSrcParameters":[{"RxID":"7F01"},{"RxID":"other"}]}
)",
            {"levelChanged(-1, Unknown)", "levelChanged(-1, 0)", "presentChanged(false)",
                "conditionChanged(Unknown)", "conditionChanged(0)", "fullChargeCapacityChanged(-1)",
                "cycleCountChanged(-1)", "temperatureChanged(nan)", "rxidChanged(\"\")"},
            {"[BatteryInfo] Could not read pps. error: \"No such file or directory\"",
                "[BatteryInfo] Could read, but not decode pps"},
            "malformed\n", {"temperatureChanged(nan)"}}},
        "levelChanged(int,~BatteryChargingState::Type) presentChanged(bool) "
        "conditionChanged(~BatteryCondition::Type) fullChargeCapacityChanged(int) cycleCountChanged(int) "
        "temperatureChanged(float) rxidChanged(QString) levelChanged(int,int) conditionChanged(int) "
        "int level ~BatteryChargingState::Type chargingState(levelChanged(int,~BatteryChargingState::Type)) "
        "bool present ~BatteryCondition::Type condition int fullChargeCapacity int cycleCount "
        "float temperature QString rxid"},
    {"SimCardInfo", [] { return new SimCardInfo; },
        "state=Ready mobileCountryCode=\"310\" mobileNetworkCode=\"26\" serialNumber=\"894\" "
        "subscriberIdentifier=\"31026\"",
        "state=NotDetected mobileCountryCode=\"\" mobileNetworkCode=\"\" serialNumber=\"\" "
        "subscriberIdentifier=\"\"",
        {"SimCardInfo - failed to open private PPS object:" + Missing,
            "SimCardInfo - failed to open restricted PPS object:" + Missing},
        {{"/pps/services/cellular/uicc/card0/status_private", R"(@status_private
uicc_state:json:{"state":"READY"}
hplmn:json:{"mcc":"310","mnc":"26"}
iccid::894
)",
             {"stateChanged(NotDetected)", "stateChanged(0)", "mobileCountryCodeChanged(\"\")",
                 "mobileNetworkCodeChanged(\"\")", "serialNumberChanged(\"\")"},
             {"SimCardInfo - failed to read private PPS data:" + Missing,
                 "SimCardInfo - failed to decode private PPS data"}},
            {"/pps/services/cellular/uicc/card0/status_restricted", "@status_restricted\nimsi::31026\n",
                {"subscriberIdentifierChanged(\"\")"},
                {"SimCardInfo - failed to read restricted PPS data:" + Missing,
                    "SimCardInfo - failed to decode restricted PPS data"}}},
        "stateChanged(~SimCardState::Type) mobileCountryCodeChanged(QString) "
        "mobileNetworkCodeChanged(QString) serialNumberChanged(QString) "
        "subscriberIdentifierChanged(QString) stateChanged(int) "
        "~SimCardState::Type state QString mobileCountryCode QString mobileNetworkCode "
        "QString serialNumber QString subscriberIdentifier"},
    {"CellularRadioInfo", [] { return new CellularRadioInfo; },
        "poweredOn=true technologies=Lte services=Voice bands=UmtsI enabledTechnologies=Gsm "
        "activeTechnologies=Umts networkCount=1 dataEnabled=true dataRoaming=true",
        "poweredOn=false technologies=None services=None bands=None enabledTechnologies=None "
        "activeTechnologies=None networkCount=0 dataEnabled=false dataRoaming=false",
        {"CellularRadioInfo - failed to open public PPS object:" + Missing},
        {{Radio + "status_public", R"(@status_public
power_status::ON
provider_capability:json:{"services":2,"tech":["lte"]}
network_technology:json:["umts"]
band_capability:json:{"umts":1}
)",
             {"poweredOnChanged(false)", "activeTechnologiesChanged(None)", "activeTechnologiesChanged(0)",
                 "networkCountChanged(0)"},
             {"CellularRadioInfo - failed to read public PPS data:" + Missing,
                 "CellularRadioInfo - failed to decode public PPS data"}},
            {Radio + "status_persistent", R"(configured_technologies:json:{"enabled":["gsm","6g"]})",
                {"enabledTechnologiesChanged(None)", "enabledTechnologiesChanged(0)"},
                {"CellularRadioInfo - failed to read persistent PPS data:" + Missing,
                    "CellularRadioInfo - failed to decode persistent PPS data"}},
            {"/pps/services/cds/cnice/status",
                "@status\ndata_services_status::ON\ndata_roaming_status::ROAMING\n",
                {"dataEnabledChanged(false)", "dataRoamingChanged(false)"},
                {"CellularRadioInfo - failed to read data services PPS data:" + Missing,
                    "CellularRadioInfo - failed to decode data services PPS data"},
                "data_services_status:n:one\n"}},
        "poweredOnChanged(bool) enabledTechnologiesChanged(~CellularTechnology::Types) "
        "activeTechnologiesChanged(~CellularTechnology::Types) networkCountChanged(int) "
        "dataEnabledChanged(bool)(revision 1) dataRoamingChanged(bool)(revision 1) "
        "enabledTechnologiesChanged(int) activeTechnologiesChanged(int) "
        "bool poweredOn QFlags<~CellularTechnology::Type> technologies(constant) "
        "QFlags<~CellularService::Type> services(constant) QFlags<~CellularBand::Type> bands(constant) "
        "QFlags<~CellularTechnology::Type> enabledTechnologies "
        "QFlags<~CellularTechnology::Type> activeTechnologies int networkCount "
        "bool dataEnabled(revision 1) bool dataRoaming(revision 1)"},
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
            {Radio + "status_cell_public", R"(network_service:n:1
network_name:json:{"name":"North"}
serving_network:json:{"mcc":"310","mnc":"26"}
signal_strength:json:{"RSSI":-71}
roaming:json:{"state":"ROAMING","suppress":false}
)",
                {"servicesChanged(None)", "servicesChanged(0)", "nameChanged(\"\")",
                    "mobileCountryCodeChanged(\"\")", "mobileNetworkCodeChanged(\"\")",
                    "signalStrengthChanged(0)", "roamingChanged(false)"},
                {"CellularNetworkInfo - failed to read public PPS data:" + Missing,
                    "CellularNetworkInfo - failed to decode public PPS data"}},
            {Radio + "status_cell_private",
                R"(serving_network:json:{"cell_id":1,"lac":2,"tac":3,"bid":4,"nid":5,"sid":"6"})",
                {"cellIdChanged(0)", "locationAreaCodeChanged(0)", "trackingAreaCodeChanged(0)",
                    "baseStationIdChanged(0)", "networkIdChanged(0)", "systemIdChanged(0)"},
                {"CellularNetworkInfo - failed to read private PPS data:" + Missing,
                    "CellularNetworkInfo - failed to decode private PPS data"}},
            {"/pps/services/rum/csm/status_public", "network_name::Mobile\n", {"displayNameChanged(\"\")"},
                {"failed to read raw data:" + Missing, "failed to decode data"}}},
        "indexChanged(int) technologyChanged(~CellularTechnology::Type) "
        "servicesChanged(~CellularService::Types) nameChanged(QString) mobileCountryCodeChanged(QString) "
        "mobileNetworkCodeChanged(QString) signalStrengthChanged(int) roamingChanged(bool) "
        "cellIdChanged(int) locationAreaCodeChanged(int) trackingAreaCodeChanged(int) "
        "baseStationIdChanged(int) networkIdChanged(int) systemIdChanged(int) displayNameChanged(QString) "
        "technologyChanged(int) servicesChanged(int) setIndex(int)(slot) "
        "int index(writable) ~CellularTechnology::Type technology QFlags<~CellularService::Type> services "
        "QString name QString mobileCountryCode QString mobileNetworkCode int signalStrength bool roaming "
        "int cellId int locationAreaCode int trackingAreaCode int baseStationId int networkId int systemId "
        "QString displayName"},
    {"CellularDataInterface", [] { return new CellularDataInterface("web"); },
        "name=\"web\" valid=true alwaysOn=true accessControlled=true networkInterfaceName=\"rmnet0\" "
        "accessPointName=\"internet\" connectionState=Connected",
        "name=\"web\" valid=false alwaysOn=false accessControlled=false networkInterfaceName=\"\" "
        "accessPointName=\"\" connectionState=Disconnected",
        {"CellularDataInterface - failed to open status PPS object:" + Missing},
        {{"/pps/services/cds/cnice/status",
            R"(web:json:{"enabled":true,"always_on":true,"access_controlled":true,"active":true,"connected":true,"net_if":"rmnet0","apn":"internet"})",
            {"validChanged(false)", "alwaysOnChanged(false)", "accessControlledChanged(false)",
                "connectionStateChanged(Disconnected)", "connectionStateChanged(0)",
                "networkInterfaceNameChanged(\"\")", "accessPointNameChanged(\"\")"},
            {"CellularDataInterface - failed to read status PPS data:" + Missing,
                "CellularDataInterface - failed to decode status PPS data"},
            "web:json:{\n"}},
        "nameChanged(QString) validChanged(bool) alwaysOnChanged(bool) accessControlledChanged(bool) "
        "networkInterfaceNameChanged(QString) accessPointNameChanged(QString) "
        "connectionStateChanged(~CellularConnectionState::Type) connectionStateChanged(int) "
        "requestConnect()(slot) requestDisconnect()(slot) allNames()(method) "
        "QString name(writable) bool valid bool alwaysOn bool accessControlled QString networkInterfaceName "
        "QString accessPointName ~CellularConnectionState::Type connectionState"},
};

class FacilityTest : public ::testing::TestWithParam<Facility>
{
protected:
    void placeAll()
    {
        for (const Source &source : GetParam().sources)
            root.place(source.path, source.text);
    }

    LogCapture log;
    DeviceRoot root;
};

TEST_P(FacilityTest, AnswersAtOnceWithWhatIsThereAndSignalsNothing)
{
    placeAll();
    const std::unique_ptr<QObject> facility(GetParam().make());
    SignalLog heard(facility.get());
    EXPECT_EQ(valuesOf(*facility), GetParam().values);
    settle();
    EXPECT_EQ(heard.take(), QStringList());
    EXPECT_EQ(log.take(), QStringList());
}

TEST_P(FacilityTest, WithoutItsObjectsItKeepsTheDefaultsForGood)
{
    const std::unique_ptr<QObject> facility(GetParam().make());
    EXPECT_EQ(log.take(), GetParam().notOpened);
    SignalLog heard(facility.get());
    placeAll();
    settle();
    EXPECT_EQ(heard.take(), QStringList());
    EXPECT_EQ(log.take(), QStringList());
    EXPECT_EQ(valuesOf(*facility), GetParam().defaults);
}

TEST_P(FacilityTest, AReadingThatFailsGivesTheDefaultsAndTheNextGoodOneBringsAllBack)
{
    placeAll();
    const std::unique_ptr<QObject> facility(GetParam().make());
    SignalLog heard(facility.get());
    for (const Source &source : GetParam().sources) {
        if (source.lost.isEmpty())
            continue;
        root.remove(source.path);
        EXPECT_EQ(heard.waitFor(int(source.lost.size())), source.lost);
        root.place(source.path, source.malformed);
        ASSERT_TRUE(waitUntil([&] { return log.categories().size() % 2 == 0; })) << source.path.toStdString();
        EXPECT_EQ(log.take(), source.warnings);
        EXPECT_EQ(heard.take(), source.stillLost);
        root.place(source.path, source.text);
        const QStringList found = heard.waitFor(int(source.lost.size()));
        EXPECT_EQ(found.size(), source.lost.size());
        EXPECT_EQ(valuesOf(*facility), GetParam().values);
        // Each signal, but for the integer twins, tells the value of its own property.
        static const QRegularExpression parts(R"(^(\w+)Changed\(([^,]*?)(, .*)?\)$)");
        QSet<QString> told;
        for (const QString &signal : found) {
            const QRegularExpressionMatch match = parts.match(signal);
            const bool isTwin =
                std::exchange(told, told | QSet{match.captured(1)}).contains(match.captured(1));
            EXPECT_TRUE(isTwin || GetParam().values.contains(match.captured(1) + "=" + match.captured(2)))
                << signal.toStdString();
        }
    }
}

TEST_P(FacilityTest, ASlotOfAnySignalMayDestroyIt)
{
    for (const Source &source : GetParam().sources) {
        for (qsizetype last = 1; last <= source.lost.size(); ++last) {
            placeAll();
            QObject *facility = GetParam().make();
            qsizetype heard = 0;
            oz::meta::SignalTap tap(facility, [&](const QMetaMethod &, const QVariantList &) {
                if (++heard == last)
                    delete std::exchange(facility, nullptr);
            });
            root.remove(source.path);
            ASSERT_TRUE(waitUntil([&] { return !facility; })) << source.path.toStdString();
            settle();
            EXPECT_EQ(heard, last) << source.path.toStdString();
        }
    }
}

TEST_P(FacilityTest, DeclaresItsSignalsMethodsAndPropertiesInOrder)
{
    const std::unique_ptr<QObject> facility(GetParam().make());
    EXPECT_EQ(declarationsOf(*facility->metaObject()), GetParam().declarations);
}

INSTANTIATE_TEST_SUITE_P(Each, FacilityTest, ::testing::ValuesIn(Facilities),
    [](const auto &facility) { return std::string(facility.param.name); });

TEST(Enumerations, AreKnownByName)
{
    const struct
    {
        const QMetaObject &holder;
        const char *enumerators;
        bool isSet = false;
    } rows[] = {
        {SdCardState::staticMetaObject, "Unknown=0 Mounted=1 Unmounted=2 Busy=3"},
        {SdCardActivity::staticMetaObject, "Unknown=0 Idle=1 Busy=2"},
        {BatteryChargingState::staticMetaObject, "Unknown=0 NotCharging=1 Charging=2 Discharging=3 Full=4"},
        {BatteryCondition::staticMetaObject, "Unknown=0 OK=1 Bad=2"},
        {HdmiConnector::staticMetaObject, "Unknown=0 None=1 Micro=2"},
        {SimCardState::staticMetaObject,
            "NotDetected=0 Incompatible=1 NotProvisioned=2 ReadError=3 PinRequired=4 Ready=5"},
        {CellularConnectionState::staticMetaObject, "Disconnected=0 PendingConnect=1 Connected=2"},
        {CellularConnectionRequestResult::staticMetaObject,
            "Requested=0 InternalError=1 InvalidInterface=2 PermissionDenied=3 NotPossible=4"},
        {CellularTechnology::staticMetaObject, "None=0 Gsm=1 Umts=2 Cdma1X=4 Evdo=8 Lte=16", true},
        {CellularService::staticMetaObject,
            "None=0 Emergency=1 Voice=2 E911Callback=4 Data=256 GenericAccessNetwork=512 "
            "ConcurrentVoiceData=1024 DataGprs=4096 DataEdge=8192 DataUmts=16384 DataHspa=32768 "
            "DataHspaP=65536 DataCdma=131072 DataEvdo0=262144 DataEvdoA=524288 DataEhrpd=1048576 "
            "DataLte=2097152",
            true},
        {CellularBand::staticMetaObject,
            "None=0 Cdma0=1 CdmaI=2 CdmaXV=4 Gsm850=8 Gsm900=16 Gsm1800=32 Gsm1900=64 UmtsI=128 UmtsII=256 "
            "UmtsIII=512 UmtsIV=1024 UmtsV=2048 UmtsVI=4096 UmtsVII=8192 UmtsVIII=16384 UmtsIX=32768 "
            "UmtsX=65536 LteII=131072 LteIII=262144 LteIV=524288 LteV=1048576 LteVII=2097152 "
            "LteVIII=4194304 LteXIII=8388608 LteXVII=16777216 LteXX=33554432",
            true},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(enumeratorsOf(row.holder), row.enumerators);
        EXPECT_EQ(enumeratorsOf(row.holder, "Types"), row.isSet ? row.enumerators : "");
    }
}

} // namespace
