#include "common/Testing.hpp"

#include <oz/device/SimCardInfo.hpp>

using namespace oz::device;
using namespace oz::testing;

namespace {

const QString Private = "/pps/services/cellular/uicc/card0/status_private";
const QString Restricted = "/pps/services/cellular/uicc/card0/status_restricted";

const QByteArray Ready = R"(@status_private
uicc_state:json:{"state":"READY"}
hplmn:json:{"mcc":"310","mnc":"26"}
iccid::8944500102
)";

const QString ReadyValues = "state=Ready mobileCountryCode=\"310\" mobileNetworkCode=\"26\" "
                            "serialNumber=\"8944500102\" subscriberIdentifier=\"31026012345\"";
const QString NoValues = "state=NotDetected mobileCountryCode=\"\" mobileNetworkCode=\"\" "
                         "serialNumber=\"\" subscriberIdentifier=\"\"";

class SimCardInfoTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        root.place(Private, Ready);
        root.place(Restricted, "@status_restricted\nimsi::31026012345\n");
    }

    LogCapture log;
    DeviceRoot root;
};

TEST_F(SimCardInfoTest, AnswersAtOnceWithTheCardThatIsThereAndSignalsNothing)
{
    SimCardInfo card;
    SignalLog heard(&card);
    EXPECT_EQ(valuesOf(card), ReadyValues);
    settle();
    EXPECT_EQ(heard.take(), QStringList());
    EXPECT_EQ(log.take(), QStringList());
}

TEST_F(SimCardInfoTest, ReadsStateAndCodesAsTheyStand)
{
    const struct
    {
        const char *lines;
        const char *values;
    } rows[] = {
        {R"(uicc_state:json:{"state":"INVALID_SIM"})", "Incompatible 310 26"},
        {R"(uicc_state:json:{"state":"NOT_PROVISIONED"})", "NotProvisioned 310 26"},
        {R"(uicc_state:json:{"state":"CARD_ERROR"})", "ReadError 310 26"},
        {R"(uicc_state:json:{"state":"CHV_REQUESTED"})", "PinRequired 310 26"},
        {R"(uicc_state:json:{"state":"ready"})", "NotDetected 310 26"},
        {R"(uicc_state:json:{"substate":"READY"})", "NotDetected 310 26"},
        {R"(uicc_state::READY)", "NotDetected 310 26"},
        {"-uicc_state", "NotDetected 310 26"},
        {R"(hplmn:json:{"mcc":" 1","mnc":"00260"})", "Ready  1 00260"},
        {R"(hplmn:json:{"mcc":310})", "Ready 310 "},
        {"hplmn::310", "Ready  "},
        {"-hplmn", "Ready  "},
    };
    for (const auto &row : rows) {
        root.place(Private, Ready + row.lines + "\n");
        const SimCardInfo card;
        EXPECT_EQ(card.property("state").toString() + " " + card.mobileCountryCode() + " "
                + card.mobileNetworkCode(),
            row.values)
            << row.lines;
    }
}

TEST_F(SimCardInfoTest, OnlyWhatChangedIsSignalledInItsOrder)
{
    SimCardInfo card;
    SignalLog heard(&card);
    root.place(Private, Ready + "uicc_state:json:{\"state\":\"CHV_REQUESTED\"}\n");
    EXPECT_EQ(heard.waitFor(2), (QStringList{"stateChanged(PinRequired)", "stateChanged(4)"}));
    root.place(Private, Ready + "hplmn:json:{\"mcc\":\"262\",\"mnc\":\"26\"}\niccid::1\n");
    EXPECT_EQ(heard.waitFor(4),
        (QStringList{"stateChanged(Ready)", "stateChanged(5)", "mobileCountryCodeChanged(\"262\")",
            "serialNumberChanged(\"1\")"}));
    root.place(Restricted, "@status_restricted\nimsi::262\n");
    EXPECT_EQ(heard.waitFor(1), QStringList{"subscriberIdentifierChanged(\"262\")"});
    root.place(Restricted, "@status_restricted\nimsi::262\nother::1\n");
    settle();
    EXPECT_EQ(heard.take(), QStringList());
}

TEST_F(SimCardInfoTest, AReadingThatFailsTakesTheCardAwayAndTheNextGoodOneBringsItBack)
{
    SimCardInfo card;
    SignalLog heard(&card);
    root.remove(Private);
    EXPECT_EQ(heard.waitFor(5),
        (QStringList{"stateChanged(NotDetected)", "stateChanged(0)", "mobileCountryCodeChanged(\"\")",
            "mobileNetworkCodeChanged(\"\")", "serialNumberChanged(\"\")"}));
    root.place(Restricted, "imsi\n");
    EXPECT_EQ(heard.waitFor(1), QStringList{"subscriberIdentifierChanged(\"\")"});
    EXPECT_EQ(valuesOf(card), NoValues);
    root.place(Private, "nothing\n");
    ASSERT_TRUE(waitUntil([&] { return log.categories().size() == 3; }));
    root.remove(Restricted);
    ASSERT_TRUE(waitUntil([&] { return log.categories().size() == 4; }));
    EXPECT_EQ(log.take(),
        (QStringList{"SimCardInfo - failed to read private PPS data:  \"No such file or directory\"",
            "SimCardInfo - failed to decode restricted PPS data",
            "SimCardInfo - failed to decode private PPS data",
            "SimCardInfo - failed to read restricted PPS data:  \"No such file or directory\""}));
    EXPECT_EQ(heard.take(), QStringList());
    SetUp();
    EXPECT_EQ(heard.waitFor(6).size(), 6);
    EXPECT_EQ(valuesOf(card), ReadyValues);
}

TEST_F(SimCardInfoTest, AnObjectThatDoesNotOpenLeavesItsOwnValuesEmptyForGood)
{
    root.remove(Private);
    SimCardInfo card;
    EXPECT_EQ(log.take(),
        QStringList{"SimCardInfo - failed to open private PPS object:  \"No such file or directory\""});
    EXPECT_EQ(card.subscriberIdentifier(), "31026012345");
    root.remove(Restricted);
    SimCardInfo nothing;
    EXPECT_EQ(log.take().value(1),
        "SimCardInfo - failed to open restricted PPS object:  \"No such file or directory\"");
    SignalLog heard(&nothing);
    SetUp();
    settle();
    EXPECT_EQ(heard.take(), QStringList());
    EXPECT_EQ(valuesOf(nothing), NoValues);
    EXPECT_EQ(card.state(), SimCardState::NotDetected);
}

TEST_F(SimCardInfoTest, ASlotMayDestroyTheObject)
{
    auto *card = new SimCardInfo;
    bool more = false;
    QObject::connect(card, qOverload<int>(&SimCardInfo::stateChanged), [&] { delete card; });
    QObject::connect(card, &SimCardInfo::mobileCountryCodeChanged, [&] { more = true; });
    root.remove(Private);
    ASSERT_TRUE(waitUntil([&] { return !log.categories().isEmpty(); }));
    settle();
    EXPECT_FALSE(more);
}

TEST(SimCardInfoMetaObject, DeclaresWhatItAnnouncesInOrder)
{
    EXPECT_EQ(declarationsOf(SimCardInfo::staticMetaObject).join('\n'),
        R"(signal stateChanged(oz::device::SimCardState::Type)
signal mobileCountryCodeChanged(QString)
signal mobileNetworkCodeChanged(QString)
signal serialNumberChanged(QString)
signal subscriberIdentifierChanged(QString)
signal stateChanged(int)
property state: oz::device::SimCardState::Type notify stateChanged(oz::device::SimCardState::Type)
property mobileCountryCode: QString notify mobileCountryCodeChanged(QString)
property mobileNetworkCode: QString notify mobileNetworkCodeChanged(QString)
property serialNumber: QString notify serialNumberChanged(QString)
property subscriberIdentifier: QString notify subscriberIdentifierChanged(QString))");
    EXPECT_EQ(enumeratorsOf(SimCardState::staticMetaObject),
        "NotDetected=0 Incompatible=1 NotProvisioned=2 ReadError=3 PinRequired=4 Ready=5");
}

} // namespace
