#include "battery/BatteryPublisher.hpp"

namespace oz::services {

namespace {

constexpr int MissingInteger = 80'000'000;

// Without charge the number of chargers tells discharging from not charging.
QString chargingStateText(BatterySource::Charging charging)
{
    switch (charging) {
    case BatterySource::Charging::No:
        return QStringLiteral("NC");
    case BatterySource::Charging::Yes:
        return QStringLiteral("CC");
    case BatterySource::Charging::Full:
        return QStringLiteral("DC");
    }
    return {};
}

QString conditionText(BatterySource::Condition condition)
{
    switch (condition) {
    case BatterySource::Condition::Unknown:
        return QStringLiteral("UNKNOWN");
    case BatterySource::Condition::Good:
        return QStringLiteral("OK");
    case BatterySource::Condition::Bad:
        return QStringLiteral("BAD");
    }
    return {};
}

QVariantMap statusOf(const BatterySource::Battery &battery)
{
    return {
        {QStringLiteral("BatteryPresent"), QStringLiteral("YES")},
        {QStringLiteral("StateOfCharge"), battery.level},
        {QStringLiteral("StateOfBattery"), conditionText(battery.condition)},
        {QStringLiteral("FullChargeCap"), battery.fullChargeCapacity},
        {QStringLiteral("CycleCount"), battery.cycleCount},
        {QStringLiteral("Temperature"),
            battery.temperature ? qRound(*battery.temperature * 100) : MissingInteger},
    };
}

QVariantMap statusOfNone()
{
    return {
        {QStringLiteral("BatteryPresent"), QStringLiteral("NO")},
        {QStringLiteral("StateOfCharge"), MissingInteger},
        {QStringLiteral("StateOfBattery"), conditionText(BatterySource::Condition::Unknown)},
        {QStringLiteral("FullChargeCap"), MissingInteger},
        {QStringLiteral("CycleCount"), MissingInteger},
        {QStringLiteral("Temperature"), MissingInteger},
    };
}

} // namespace

BatteryPublisher::BatteryPublisher(BatterySource &source)
    : m_source(source), m_status(QStringLiteral("/pps/system/BattMgr/status"))
{
    connect(&source, &BatterySource::changed, this, &BatteryPublisher::publish);
    publish();
}

void BatteryPublisher::publish()
{
    const auto state = m_source.state();
    if (!state)
        return;
    const QString receiver =
        state->wirelessReceiver.isEmpty() ? QStringLiteral("null") : state->wirelessReceiver;
    m_status.publish({
        {QStringLiteral("SystemInfo"),
            QVariantMap{{QStringLiteral("ChargingState"), chargingStateText(state->charging)}}},
        {QStringLiteral("ChargerInfo"), QVariantMap{{QStringLiteral("NumOfSource"), state->chargers}}},
        {QStringLiteral("BatteryInfo"),
            QVariantMap{{QStringLiteral("ActiveBattery"), 0},
                {QStringLiteral("BatteryStatus"),
                    QVariantList{state->battery ? statusOf(*state->battery) : statusOfNone()}}}},
        {QStringLiteral("WlcSourceInfo"),
            QVariantMap{{QStringLiteral("WlcSrcParameters"),
                QVariantList{QVariantMap{{QStringLiteral("RxID"), receiver}}}}}},
    });
}

} // namespace oz::services
