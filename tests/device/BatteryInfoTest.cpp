#include "device/Objects.hpp"
#include "harness/Testing.hpp"

#include <oz/device/BatteryInfo.hpp>

using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Path = "/pps/system/BattMgr/status";

class BatteryInfoTest : public DeviceTest
{
protected:
    void publish(const QByteArray &lines) { root.place(Path, BatteryText + lines); }
};

TEST_F(BatteryInfoTest, ReadsTheChargingStateFromTheSystemAndTheCharger)
{
    const std::tuple<const char *, const char *, BatteryChargingState::Type> rows[] = {
        {R"({"ChargingState":"TC"})", "{}", BatteryChargingState::Charging},
        {R"({"ChargingState":"CV"})", "{}", BatteryChargingState::Charging},
        {R"({"ChargingState":"DC"})", "{}", BatteryChargingState::Full},
        {R"({"ChargingState":"NC"})", R"({"NumOfSource":0})", BatteryChargingState::Discharging},
        {R"({"ChargingState":"NC"})", R"({"NumOfSource":"-1"})", BatteryChargingState::Discharging},
        {R"({"ChargingState":"NC"})", R"({"NumOfSource":1})", BatteryChargingState::NotCharging},
        {R"({"ChargingState":"NC"})", R"({"NumOfSource":"none"})", BatteryChargingState::NotCharging},
        {R"({"ChargingState":"NC"})", "{}", BatteryChargingState::NotCharging},
    };
    for (const auto &[systemInfo, charger, state] : rows) {
        publish(QByteArray("SystemInfo:json:") + systemInfo + "\nChargerInfo:json:" + charger + "\n");
        EXPECT_EQ(BatteryInfo().chargingState(), state) << systemInfo << charger;
    }

    for (const char *system : {R"({"ChargingState":"cc"})", R"({"Other":"CC"})", R"("CC")", "[]"}) {
        publish(QByteArray("SystemInfo:json:") + system + "\n");
        EXPECT_EQ(BatteryInfo().chargingState(), BatteryChargingState::Unknown) << system;
        EXPECT_EQ(log.take(), QStringList{"[BatteryInfo] Could not find ChargingState in SystemInfo"});
    }
}

TEST_F(BatteryInfoTest, WhatTheBatteryDoesNotSayIsUnknown)
{
    const QString unknown = "level=-1 chargingState=Charging present=false condition=Unknown "
                            "fullChargeCapacity=-1 cycleCount=-1 temperature=nan rxid=\"7F01\"";
    const QStringList noNumbers{"[BatteryInfo] Could not find StateOfCharge in BatteryStatus",
        "[BatteryInfo] Could not find FullChargeCap in BatteryStatus",
        "[BatteryInfo] Could not find CycleCount in BatteryStatus",
        "[BatteryInfo] Could not find Temperature in BatteryStatus"};
    const QStringList notActive{"[BatteryInfo] Could not find ActiveBattery in BatteryInfo"};
    const std::tuple<const char *, QString, QStringList> rows[] = {
        {R"({"ActiveBattery":2,"BatteryStatus":[{},{"StateOfCharge":80}]})", unknown, noNumbers},
        {R"({"ActiveBattery":-1,"BatteryStatus":[{"StateOfCharge":80}]})", unknown, noNumbers},
        {R"({"ActiveBattery":0,"BatteryStatus":["full"]})", unknown, noNumbers},
        {R"({"ActiveBattery":0})", unknown, noNumbers},
        {R"({"BatteryStatus":[{"StateOfCharge":80}]})", unknown, notActive},
        {R"({"ActiveBattery":"first","BatteryStatus":[{"StateOfCharge":80}]})", unknown, notActive},
        {R"("none")", unknown, notActive},
        {R"({"ActiveBattery":0,"BatteryStatus":[{"StateOfCharge":80000000,"FullChargeCap":80000000,)"
         R"("CycleCount":80000000,"Temperature":80000000,"BatteryPresent":"yes","StateOfBattery":"ok"}]})",
            unknown, {}},
        {R"({"ActiveBattery":"0","BatteryStatus":[{"StateOfCharge":"7","FullChargeCap":0,"CycleCount":0,)"
         R"("Temperature":-550,"BatteryPresent":"YES","StateOfBattery":"BAD"}]})",
            "level=7 chargingState=Charging present=true condition=Bad fullChargeCapacity=0 cycleCount=0 "
            "temperature=-5.5 rxid=\"7F01\"",
            {}},
    };
    for (const auto &[batteries, values, warnings] : rows) {
        publish(QByteArray("BatteryInfo:json:") + batteries + "\n");
        EXPECT_EQ(valuesOf(BatteryInfo()), values) << batteries;
        EXPECT_EQ(log.take(), warnings) << batteries;
    }
}

TEST_F(BatteryInfoTest, ReadsTheReceiverOfTheFirstWirelessSource)
{
    const QString noList = "[BatteryInfo] Could not find list of WlcSrcParameters";
    const QString noId = "[BatteryInfo] RxID not present";
    const std::tuple<const char *, QStringList> rows[] = {
        {R"({"WlcSrcParameters":[{"RxID":"null"}]})", {}},
        {R"({"WlcSrcParameters":[{"RxID":""}]})", {noId}},
        {R"({"WlcSrcParameters":[{},{"RxID":"second"}]})", {noId}},
        {R"({"WlcSrcParameters":["7F01"]})", {noId}},
        {R"({"WlcSrcParameters":[]})", {noList}},
        {R"({"WlcSrcParameters":{"RxID":"7F01"}})", {noList}},
        {R"("")", {noList}},
    };
    for (const auto &[source, warnings] : rows) {
        publish(QByteArray("WlcSourceInfo:json:") + source + "\n");
        EXPECT_EQ(BatteryInfo().rxid(), "") << source;
        EXPECT_EQ(log.take(), warnings) << source;
    }
}

TEST_F(BatteryInfoTest, AnObjectOfAnotherNameHasNoAttributes)
{
    root.place(Path, QByteArray(BatteryText).replace("@status", "@state"));
    EXPECT_EQ(BatteryInfo().level(), -1);
    EXPECT_EQ(log.take(),
        (QStringList{"[BatteryInfo] Could not find ChargingState in SystemInfo",
            "[BatteryInfo] Could not find ActiveBattery in BatteryInfo",
            "[BatteryInfo] Could not find list of WlcSrcParameters"}));
}

} // namespace
