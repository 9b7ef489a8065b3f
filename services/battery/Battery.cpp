#include "battery/Battery.hpp"

namespace oz::services {

namespace {

constexpr int UnknownNumber = 80'000'000;
const QString NoReceiver = QStringLiteral("null");

QString receiverText(const Battery &battery)
{
    return battery.wirelessReceiver.isEmpty() ? NoReceiver : battery.wirelessReceiver;
}

} // namespace

const WordList<Battery::Condition> &batteryConditions()
{
    static const WordList<Battery::Condition> words{
        {Battery::Condition::Good, "OK", "ok"}, {Battery::Condition::Bad, "BAD", "bad"}};
    return words;
}

const Fields<Battery> &batteryFields()
{
    using B = Battery;
    using C = Columns<Battery>;
    // Without charge the number of chargers tells discharging from not charging.
    static const Fields<Battery> fields(QStringLiteral("/pps/system/BattMgr/status"),
        {
            {"present", "BatteryInfo/BatteryStatus/0/BatteryPresent", C::truth(&B::present, "YES", "NO"),
                "whether there is a battery"},
            {"level", "BatteryInfo/BatteryStatus/0/StateOfCharge", C::number(&B::level, "%", {UnknownNumber}),
                "the charge"},
            {"charging", "SystemInfo/ChargingState",
                C::words(&B::charging,
                    {{B::Charging::No, "NC", "no"}, {B::Charging::Yes, "CC", "yes"},
                        {B::Charging::Full, "DC", "full"}}),
                "whether it is charging"},
            {"chargers", "ChargerInfo/NumOfSource", C::number(&B::chargers), "how many are connected"},
            {"condition", "BatteryInfo/BatteryStatus/0/StateOfBattery",
                C::words(&B::condition, batteryConditions(), "UNKNOWN"), "its condition"},
            {"full-charge-capacity", "BatteryInfo/BatteryStatus/0/FullChargeCap",
                C::number(&B::fullChargeCapacity, "mAh", {UnknownNumber}),
                "the charge that it holds when full"},
            {"cycle-count", "BatteryInfo/BatteryStatus/0/CycleCount",
                C::number(&B::cycleCount, "", {UnknownNumber}),
                "how many times it was charged and discharged"},
            {"temperature", "BatteryInfo/BatteryStatus/0/Temperature",
                C::number(&B::temperature, "°C", {UnknownNumber, 100}), "its temperature"},
            {"receiver", "WlcSourceInfo/WlcSrcParameters/0/RxID", C::text(receiverText),
                "the receiver on a wireless charger; null for none"},
            {"", "SystemInfo", C::constant(QVariantMap()), ""},
            {"", "ChargerInfo", C::constant(QVariantMap()), ""},
            {"", "BatteryInfo/ActiveBattery", C::constant(0), ""},
        });
    return fields;
}

} // namespace oz::services
