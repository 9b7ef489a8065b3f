#include "common/Testing.hpp"

#include <oz/device/CellularRadioInfo.hpp>

using namespace oz::device;
using namespace oz::testing;

namespace {

const QString Public = "/pps/services/cellular/radioctrl/status_public";
const QString Persistent = "/pps/services/cellular/radioctrl/status_persistent";
const QString Data = "/pps/services/cds/cnice/status";

const QByteArray Radio = R"(@status_public
power_status::ON
provider_capability:json:{"services":2,"tech":["lte"]}
network_technology:json:["umts"]
band_capability:json:{"umts":1}
)";

const QString NoValues =
    "poweredOn=false technologies=None services=None bands=None enabledTechnologies=None "
    "activeTechnologies=None networkCount=0 dataEnabled=false dataRoaming=false";

class CellularRadioInfoTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        root.place(Public, Radio);
        root.place(Persistent, R"(@status_persistent
configured_technologies:json:{"enabled":["gsm","6g"]}
)");
        root.place(Data, "@status\ndata_services_status::ON\ndata_roaming_status::HOME\n");
    }

    LogCapture log;
    DeviceRoot root;
};

TEST_F(CellularRadioInfoTest, ReadsEachAttributeByItsTable)
{
    const struct
    {
        const char *line;
        const char *property;
        int value;
    } rows[] = {
        {"power_status::on", "poweredOn", 0},
        {"power_status::OFF", "poweredOn", 0},
        {"-power_status", "poweredOn", 0},
        {R"(provider_capability:json:{"services":4294967295})", "services", 0x3FF707},
        {R"(provider_capability:json:{"tech":["gsm"]})", "services", 0},
        {R"(provider_capability:json:{"tech":["gsm","umts","cdma_1x","evdo","lte","LTE"]})", "technologies",
            31},
        {R"(provider_capability:json:{"tech":"all"})", "technologies", 0},
        {"provider_capability::all", "technologies", 0},
        {R"(network_technology:json:["umts","5g","umts"])", "activeTechnologies", 2},
        {R"(network_technology:json:["umts","5g","umts"])", "networkCount", 2},
        {R"(network_technology:json:{"umts":1})", "networkCount", 0},
        {R"(band_capability:json:{"lte":1})", "bands", 0x2000000},
        {R"(band_capability:json:{"lte":524288})", "bands", 0x2000000},
        {R"(band_capability:json:{"lte":32})", "bands", 0},
        {R"(band_capability:json:{"lte":69854})", "bands", 0x1FE0000},
        {R"(band_capability:json:{"gsm":24})", "bands", 0x8},
        {R"(band_capability:json:{"gsm":1})", "bands", 0x10},
        {R"(band_capability:json:{"cdma":15,"umts":2047})", "bands", 0x1FF87},
        {R"(band_capability:json:{"cdma":"4"})", "bands", 4},
        {"band_capability:n:1", "bands", 0},
    };
    for (const auto &row : rows) {
        root.place(Public, Radio + row.line + "\n");
        const QVariant value = CellularRadioInfo().property(row.property);
        ASSERT_TRUE(value.isValid()) << row.property;
        // Flag sets are asked by their number.
        const bool isSet = value.metaType().sizeOf() == sizeof(int);
        EXPECT_EQ(isSet ? *static_cast<const int *>(value.constData()) : value.toInt(), row.value)
            << row.line;
    }
    EXPECT_EQ(log.take(), QStringList());
}

TEST_F(CellularRadioInfoTest, OnlyWhatChangedIsSignalledAndTheCapabilitiesStay)
{
    CellularRadioInfo radio;
    SignalLog heard(&radio);
    root.place(Public,
        "power_status::OFF\nnetwork_technology:json:[\"evdo\",\"evdo\"]\n"
        "provider_capability:json:{\"services\":1,\"tech\":[\"evdo\"]}\n");
    EXPECT_EQ(heard.waitFor(4),
        (QStringList{"poweredOnChanged(false)", "activeTechnologiesChanged(Evdo)",
            "activeTechnologiesChanged(8)", "networkCountChanged(2)"}));
    root.place(Persistent, R"(configured_technologies:json:{"enabled":["umts"]})");
    EXPECT_EQ(
        heard.waitFor(2), (QStringList{"enabledTechnologiesChanged(Umts)", "enabledTechnologiesChanged(2)"}));
    root.place(Data, "@status\ndata_services_status::ON\ndata_roaming_status::ROAMING\n");
    EXPECT_EQ(heard.waitFor(1), QStringList{"dataRoamingChanged(true)"});
    root.place(Data, "@status\ndata_services_status::OFF\nuser_enabled_data_roaming:b:true\n");
    EXPECT_EQ(heard.waitFor(2), (QStringList{"dataEnabledChanged(false)", "dataRoamingChanged(false)"}));
    root.place(Public, Radio + "power_status::OFF\nnetwork_technology:json:[\"evdo\",\"evdo\"]\n");
    settle();
    EXPECT_EQ(heard.take(), QStringList());
    EXPECT_EQ(valuesOf(radio),
        "poweredOn=false technologies=Lte services=Voice "
        "bands=UmtsI enabledTechnologies=Umts "
        "activeTechnologies=Evdo networkCount=2 dataEnabled=false dataRoaming=false");
}

TEST_F(CellularRadioInfoTest, WithoutOneOfItsObjectsItFollowsNone)
{
    const QStringList names{"public", "persistent", "data services"};
    const QStringList paths{Public, Persistent, Data};
    for (int missing = 0; missing < 3; ++missing) {
        root.remove(paths[missing]);
        CellularRadioInfo radio;
        EXPECT_EQ(log.take(),
            QStringList{"CellularRadioInfo - failed to open " + names[missing]
                + " PPS object:  \"No such file or directory\""});
        SignalLog heard(&radio);
        SetUp();
        root.place(Public, Radio + "power_status::OFF\n");
        settle();
        EXPECT_EQ(heard.take(), QStringList());
        EXPECT_EQ(valuesOf(radio), NoValues);
    }
}

TEST(CellularRadioInfoEnumerations, TheHoldersOfBitSetsKnowTheirEnumeratorsAndTheirSets)
{
    const struct
    {
        const QMetaObject &holder;
        const char *enumerators;
    } rows[] = {
        {CellularTechnology::staticMetaObject, "None=0 Gsm=1 Umts=2 Cdma1X=4 Evdo=8 Lte=16"},
        {CellularService::staticMetaObject,
            "None=0 Emergency=1 Voice=2 E911Callback=4 Data=256 GenericAccessNetwork=512 "
            "ConcurrentVoiceData=1024 DataGprs=4096 DataEdge=8192 DataUmts=16384 DataHspa=32768 "
            "DataHspaP=65536 DataCdma=131072 DataEvdo0=262144 DataEvdoA=524288 DataEhrpd=1048576 "
            "DataLte=2097152"},
        {CellularBand::staticMetaObject,
            "None=0 Cdma0=1 CdmaI=2 CdmaXV=4 Gsm850=8 Gsm900=16 Gsm1800=32 Gsm1900=64 UmtsI=128 UmtsII=256 "
            "UmtsIII=512 UmtsIV=1024 UmtsV=2048 UmtsVI=4096 UmtsVII=8192 UmtsVIII=16384 UmtsIX=32768 "
            "UmtsX=65536 LteII=131072 LteIII=262144 LteIV=524288 LteV=1048576 LteVII=2097152 "
            "LteVIII=4194304 LteXIII=8388608 LteXVII=16777216 LteXX=33554432"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(enumeratorsOf(row.holder), row.enumerators);
        EXPECT_EQ(enumeratorsOf(row.holder, "Types"), row.enumerators);
    }
}

} // namespace
