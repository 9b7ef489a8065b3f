#include "BatteryLamp.hpp"

BatteryLamp::BatteryLamp(QObject *parent) : QObject(parent)
{
    using namespace oz::device;
    connect(&m_battery, qOverload<int, BatteryChargingState::Type>(&BatteryInfo::levelChanged), this,
        &BatteryLamp::onLevel);
    onLevel(m_battery.level());
}

void BatteryLamp::onLevel(int level)
{
    const bool isLow = level <= LowLevel;
    if (isLow && !m_isLow)
        m_led.flash(2);
    m_isLow = isLow;
}
