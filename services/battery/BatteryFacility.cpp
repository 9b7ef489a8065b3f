#include "battery/SimulatedBattery.hpp"
#include "battery/UPowerBattery.hpp"
#include "facility/BusKind.hpp"

namespace oz::services {

Facility batteryFacility()
{
    return describeFacility<BatterySource, SimulatedBattery>(QStringLiteral("battery"),
        QStringLiteral("Battery"), {&batteryFields()},
        {busKind<UPowerBattery>(QStringLiteral("upower"),
            QStringLiteral("the battery and its chargers, by UPower"), QStringLiteral("device"))});
}

} // namespace oz::services
