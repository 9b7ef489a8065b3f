#include "device/Objects.hpp"
#include "harness/Testing.hpp"

#include <oz/device/CellularNetworkInfo.hpp>

using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Control = "/pps/services/cellular/radioctrl/";
const QString Settings = "/pps/services/rum/csm/status_public";

const QString CdmaSignals = R"(services(Voice) services(2) name("East") mobileNetworkCode("") )"
                            "signalStrength(-80) roaming(false) cellId(0) locationAreaCode(0) "
                            "trackingAreaCode(0) baseStationId(4) networkId(5) systemId(6) "
                            "technology(Cdma1X) technology(4)";

class CellularNetworkInfoTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        root.place(Control + "status_persistent", "");
        root.place("/pps/services/cds/cnice/status", "");
        root.place(Settings, "@status_public\nnetwork_name::North Mobile\n");
        root.place(Control + "status_cell_public", CellText);
        root.place(Control + "status_cell_private", R"(serving_network:json:{"cell_id":1,"lac":2,"tac":3})");
        root.place(Control + "status_cell_cdma_public", R"(network_service:n:2
network_name:json:{"name":"East"}
serving_network:json:{"mcc":"310"}
signal_strength:json:{"RSSI":-80}
roaming:json:{"state":"HOME"}
)");
        root.place(Control + "status_cell_cdma_private", R"(serving_network:json:{"bid":4,"nid":5,"sid":6})");
        activate(R"(["gsm","cdma_1x"])");
    }
    void activate(const QByteArray &technologies)
    {
        root.place(Control + "status_public", "network_technology:json:" + technologies + "\n");
    }
};

TEST_F(CellularNetworkInfoTest, TheIndexChoosesAmongTheTechnologiesInUse)
{
    const std::tuple<const char *, int, CellularTechnology::Type> rows[] = {
        {R"(["cdma_1x","lte","evdo","umts","gsm"])", 0, CellularTechnology::Gsm},
        {R"(["cdma_1x","lte","evdo","umts"])", 0, CellularTechnology::Umts},
        {R"(["cdma_1x","lte","evdo"])", 0, CellularTechnology::Evdo},
        {R"(["cdma_1x","lte"])", 0, CellularTechnology::Lte},
        {R"(["cdma_1x"])", 0, CellularTechnology::Cdma1X},
        {"[]", 0, CellularTechnology::None},
        {R"(["cdma_1x","evdo"])", 1, CellularTechnology::Cdma1X},
        {R"(["umts","lte"])", 1, CellularTechnology::Cdma1X},
        {R"(["evdo"])", 1, CellularTechnology::Cdma1X},
        {R"(["gsm","umts"])", 1, CellularTechnology::None},
        {R"(["gsm","cdma_1x"])", 2, CellularTechnology::None},
        {R"(["gsm","cdma_1x"])", -1, CellularTechnology::None},
    };
    for (const auto &[active, index, technology] : rows) {
        activate(active);
        const CellularNetworkInfo network(index);
        EXPECT_EQ(network.technology(), technology) << active << index;
        EXPECT_EQ(network.name() == "East", technology == CellularTechnology::Cdma1X) << active;
    }
}

TEST_F(CellularNetworkInfoTest, ServicesAreTakenBitByBitAsPublished)
{
    root.place(Control + "status_cell_public", "network_service:n:1073742080\n");
    EXPECT_EQ(CellularNetworkInfo().services().toInt(), 0x40000100u);
}

TEST_F(CellularNetworkInfoTest, OnlyWhatChangedIsSignalledInItsOrder)
{
    CellularNetworkInfo network;
    SignalLog heard(&network);
    root.place(Control + "status_cell_public",
        CellText
            + "roaming:json:{\"state\":\"ROAMING\",\"suppress\":true}\n"
              "serving_network:json:{\"mcc\":\"262\",\"mnc\":\"26\"}\nnetwork_service:n:2097152\n");
    EXPECT_EQ(
        heard.waitFor(4), R"(services(DataLte) services(2097152) mobileCountryCode("262") roaming(false))");
}

TEST_F(CellularNetworkInfoTest, AChangeOfTechnologyReadsEverythingAndFollowsTheNewObjectsOnly)
{
    CellularNetworkInfo network;
    SignalLog heard(&network);
    // The replaced object changes in the same turn: nothing of that may be heard.
    activate(R"(["cdma_1x"])");
    root.place(Control + "status_cell_public", CellText + "signal_strength:json:{\"RSSI\":-99}\n");
    EXPECT_EQ(heard.waitFor(14), CdmaSignals);
    root.place(Control + "status_cell_public", CellText + "signal_strength:json:{\"RSSI\":-98}\n");
    EXPECT_EQ(heard.settled(), "");
    root.place(Control + "status_cell_cdma_private", R"(serving_network:json:{"bid":7,"nid":5,"sid":6})");
    EXPECT_EQ(heard.waitFor(1), "baseStationId(7)");
    // Index 0 stays with Cdma1X, so nothing is opened or read.
    root.remove(Control + "status_cell_cdma_public");
    EXPECT_EQ(heard.waitFor(5).count(u')'), 5);
    log.take();
    activate(R"(["cdma_1x","cdma_1x"])");
    EXPECT_EQ(heard.settled(), "");
    activate("[]");
    EXPECT_EQ(heard.waitFor(5), "baseStationId(0) networkId(0) systemId(0) technology(None) technology(0)");
}

TEST_F(CellularNetworkInfoTest, AnotherIndexIsAnnouncedAfterWhatDiffersThere)
{
    CellularNetworkInfo network;
    SignalLog heard(&network);
    network.setIndex(0);
    EXPECT_EQ(heard.take(), "");
    EXPECT_TRUE(network.setProperty("index", 1));
    EXPECT_GE(network.metaObject()->indexOfSlot("setIndex(int)"), 0);
    EXPECT_EQ(heard.take(), CdmaSignals + " index(1)");
    network.setIndex(7);
    EXPECT_TRUE(heard.take().endsWith(" technology(None) technology(0) index(7)"));
    EXPECT_EQ(network.name() + network.displayName(), "North Mobile");
}

TEST_F(CellularNetworkInfoTest, ASlotMayTurnToAnotherNetworkAndTheSignalsThatAreLeftTellOfIt)
{
    root.place(Control + "status_cell_public", CellText + "roaming::no\n");
    CellularNetworkInfo network;
    SignalLog heard(&network);
    QObject::connect(&network, &CellularNetworkInfo::signalStrengthChanged, &network, [&](int rssi) {
        if (rssi == -60)
            network.setIndex(2);
    });
    root.place(Control + "status_cell_public", CellText + "signal_strength:json:{\"RSSI\":-60}\n");
    ASSERT_TRUE(waitUntil([&] { return network.index() == 2; }));
    settle();
    const QString signalled = heard.take();
    for (const auto &[name, last] :
        {std::pair("signalStrength", "0"), {"roaming", "false"}, {"technology", "0"}})
        EXPECT_EQ(signalled.section(QString(" %1(").arg(name), -1).section(')', 0, 0), last) << name;
}

TEST_F(CellularNetworkInfoTest, ASlotMayDestroyTheObjectWhateverIsStillToFollow)
{
    for (int last = 1; last <= 15; ++last) {
        auto *network = new CellularNetworkInfo;
        EXPECT_TRUE(endsWithSignal(last, network, [&] { network->setIndex(1); })) << last;
    }
}

TEST_F(CellularNetworkInfoTest, ObjectsThatDoNotOpenLeaveTheDefaultsUntilTheTechnologyChanges)
{
    root.remove(Settings);
    root.remove(Control + "status_cell_public");
    CellularNetworkInfo network;
    // The private object is there, but goes with the public one.
    EXPECT_EQ(log.take(),
        (QStringList{"CellularNetworkInfo - failed to open settings PPS object:" + Missing,
            "CellularNetworkInfo - failed to open public PPS object:" + Missing}));
    EXPECT_EQ(network.technology(), CellularTechnology::Gsm);
    EXPECT_EQ(network.cellId(), 0);
    SignalLog heard(&network);
    root.place(Control + "status_cell_public", CellText);
    EXPECT_EQ(heard.settled(), "");

    root.remove(Control + "status_cell_private");
    activate(R"(["umts"])");
    EXPECT_TRUE(heard.waitFor(9).endsWith(" technology(Umts) technology(2)"));
    EXPECT_EQ(log.take(), QStringList{"CellularNetworkInfo - failed to open private PPS object:" + Missing});
    EXPECT_EQ(network.name(), "North");
}

TEST_F(CellularNetworkInfoTest, WithoutATechnologyTheDisplayNameComesFromTheEventLoop)
{
    activate("[]");
    CellularNetworkInfo network;
    SignalLog heard(&network);
    EXPECT_EQ(network.displayName(), "");
    EXPECT_EQ(heard.waitFor(1), R"(displayName("North Mobile"))");
}

} // namespace
