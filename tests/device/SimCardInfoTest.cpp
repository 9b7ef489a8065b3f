#include "device/Objects.hpp"
#include "harness/Testing.hpp"

#include <oz/device/SimCardInfo.hpp>

using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Private = "/pps/services/cellular/uicc/card0/status_private";
const QString Restricted = "/pps/services/cellular/uicc/card0/status_restricted";

class SimCardInfoTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        root.place(Private, SimCardText);
        root.place(Restricted, "@status_restricted\nimsi::31026012345\n");
    }
};

TEST_F(SimCardInfoTest, ReadsStateAndCodesAsTheyStand)
{
    const std::tuple<const char *, const char *> rows[] = {
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
    for (const auto &[lines, values] : rows) {
        root.place(Private, SimCardText + lines + "\n");
        const SimCardInfo card;
        EXPECT_EQ(card.property("state").toString() + " " + card.mobileCountryCode() + " "
                + card.mobileNetworkCode(),
            values)
            << lines;
    }
}

TEST_F(SimCardInfoTest, EachOfItsObjectsIsFollowedWithoutTheOther)
{
    root.remove(Private);
    SimCardInfo card;
    EXPECT_EQ(log.take().size(), 1);
    EXPECT_EQ(card.state(), SimCardState::NotDetected);
    SignalLog heard(&card);
    root.place(Private, SimCardText);
    root.place(Restricted, "imsi::262\n");
    EXPECT_EQ(heard.waitFor(1), R"(subscriberIdentifier("262"))");
}

} // namespace
