#include "device/Objects.hpp"
#include "harness/Testing.hpp"

#include <oz/device/CellularRadioInfo.hpp>

using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Public = "/pps/services/cellular/radioctrl/status_public";
const QString Persistent = "/pps/services/cellular/radioctrl/status_persistent";
const QString Data = "/pps/services/cds/cnice/status";

class CellularRadioInfoTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        root.place(Public, RadioText);
        root.place(Persistent, R"(@status_persistent
configured_technologies:json:{"enabled":["gsm","6g"]}
)");
        root.place(Data, "@status\ndata_services_status::ON\ndata_roaming_status::HOME\n");
    }
};

TEST_F(CellularRadioInfoTest, ReadsEachAttributeByItsTable)
{
    const std::tuple<const char *, const char *, int> rows[] = {
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
    for (const auto &[line, property, number] : rows) {
        root.place(Public, RadioText + line + "\n");
        const QVariant value = CellularRadioInfo().property(property);
        ASSERT_TRUE(value.isValid()) << property;
        // Flag sets are asked by their number.
        const bool isSet = value.metaType().sizeOf() == sizeof(int);
        EXPECT_EQ(isSet ? *static_cast<const int *>(value.constData()) : value.toInt(), number) << line;
    }
}

TEST_F(CellularRadioInfoTest, OnlyWhatChangedIsSignalledAndTheCapabilitiesStay)
{
    CellularRadioInfo radio;
    SignalLog heard(&radio);
    root.place(Public,
        "power_status::OFF\nnetwork_technology:json:[\"evdo\",\"evdo\"]\n"
        "provider_capability:json:{\"services\":1,\"tech\":[\"evdo\"]}\n");
    EXPECT_EQ(
        heard.waitFor(4), "poweredOn(false) activeTechnologies(Evdo) activeTechnologies(8) networkCount(2)");
    root.place(Data, "@status\ndata_services_status::ON\ndata_roaming_status::ROAMING\n");
    EXPECT_EQ(heard.waitFor(1), "dataRoaming(true)");
    root.place(Public, RadioText + "power_status::OFF\nnetwork_technology:json:[\"evdo\",\"evdo\"]\n");
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(radio.technologies(), CellularTechnology::Lte);
    EXPECT_EQ(radio.services(), CellularService::Voice);
    EXPECT_EQ(radio.bands(), CellularBand::UmtsI);
}

TEST_F(CellularRadioInfoTest, WithoutOneOfItsObjectsItFollowsNone)
{
    for (const auto &[name, path] : {std::pair("persistent", Persistent), std::pair("data services", Data)}) {
        root.remove(path);
        CellularRadioInfo radio;
        EXPECT_EQ(log.take(),
            QStringList{QString("CellularRadioInfo - failed to open ") + name + " PPS object:" + Missing});
        SignalLog heard(&radio);
        SetUp();
        root.place(Public, RadioText + "power_status::OFF\n");
        EXPECT_EQ(heard.settled(), "");
        EXPECT_EQ(radio.technologies(), CellularTechnology::None);
    }
}

} // namespace
