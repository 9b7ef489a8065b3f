#include "battery/BatteryPublisher.hpp"
#include "battery/SimulatedBattery.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility batteryFacility()
{
    return describeFacility<BatterySource, BatteryPublisher, SimulatedBattery>(QStringLiteral("battery"));
}

} // namespace oz::services
