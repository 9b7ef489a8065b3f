#include "battery/BatteryPublisher.hpp"

namespace oz::services {

namespace {

using Battery = BatteryState::Battery;

constexpr int MissingInteger = 80'000'000;

// Without charge the number of chargers tells discharging from not charging.
QString textOf(BatteryState::Charging charging)
{
    switch (charging) {
    case BatteryState::Charging::No:
        return QStringLiteral("NC");
    case BatteryState::Charging::Yes:
        return QStringLiteral("CC");
    case BatteryState::Charging::Full:
        return QStringLiteral("DC");
    }
    return {};
}

QString textOf(std::optional<BatteryState::Condition> condition)
{
    if (!condition)
        return QStringLiteral("UNKNOWN");
    return *condition == BatteryState::Condition::Good ? QStringLiteral("OK") : QStringLiteral("BAD");
}

QVariantMap statusOf(const std::optional<Battery> &inserted)
{
    const Battery battery = inserted.value_or(Battery());
    return {
        {QStringLiteral("BatteryPresent"), inserted ? QStringLiteral("YES") : QStringLiteral("NO")},
        {QStringLiteral("StateOfCharge"), battery.level.value_or(MissingInteger)},
        {QStringLiteral("StateOfBattery"), textOf(battery.condition)},
        {QStringLiteral("FullChargeCap"), battery.fullChargeCapacity.value_or(MissingInteger)},
        {QStringLiteral("CycleCount"), battery.cycleCount.value_or(MissingInteger)},
        {QStringLiteral("Temperature"),
            battery.temperature ? qRound(*battery.temperature * 100) : MissingInteger},
    };
}

} // namespace

BatteryPublisher::BatteryPublisher(const QString &facility, BatterySource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_status(tree, QStringLiteral("/pps/system/BattMgr/status"))
{
    declare(m_status);
    follow();
}

void BatteryPublisher::publishState(const BatteryState &state)
{
    const QString receiver =
        state.wirelessReceiver.isEmpty() ? QStringLiteral("null") : state.wirelessReceiver;
    QVariantMap system;
    if (state.charging)
        system.insert(QStringLiteral("ChargingState"), textOf(*state.charging));
    QVariantMap chargers;
    insertKnown(&chargers, QStringLiteral("NumOfSource"), state.chargers);
    m_status.publish({
        {QStringLiteral("SystemInfo"), system},
        {QStringLiteral("ChargerInfo"), chargers},
        {QStringLiteral("BatteryInfo"),
            QVariantMap{{QStringLiteral("ActiveBattery"), 0},
                {QStringLiteral("BatteryStatus"), QVariantList{statusOf(state.battery)}}}},
        {QStringLiteral("WlcSourceInfo"),
            QVariantMap{{QStringLiteral("WlcSrcParameters"),
                QVariantList{QVariantMap{{QStringLiteral("RxID"), receiver}}}}}},
    });
}

} // namespace oz::services
