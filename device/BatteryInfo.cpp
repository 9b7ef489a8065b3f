#include <oz/device/BatteryInfo.hpp>

#include "BatteryInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

BatteryInfo::BatteryInfo(QObject *parent) : QObject(parent), d(new BatteryInfoPrivate(this))
{
    keepOnThread(this);
}

BatteryInfo::~BatteryInfo() = default;

int BatteryInfo::level() const
{
    return d->values().level;
}

BatteryChargingState::Type BatteryInfo::chargingState() const
{
    return d->values().chargingState;
}

bool BatteryInfo::isPresent() const
{
    return d->values().present;
}

BatteryCondition::Type BatteryInfo::condition() const
{
    return d->values().condition;
}

int BatteryInfo::fullChargeCapacity() const
{
    return d->values().fullChargeCapacity;
}

int BatteryInfo::cycleCount() const
{
    return d->values().cycleCount;
}

float BatteryInfo::temperature() const
{
    return d->values().degrees;
}

QString BatteryInfo::rxid() const
{
    return d->values().rxid;
}

} // namespace oz::device
