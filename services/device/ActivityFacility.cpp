#include "device/PowerManager.hpp"
#include "device/SimulatedActivity.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility activityFacility()
{
    return describeFacility<ActivitySource, PowerManager, SimulatedActivity>(QStringLiteral("activity"));
}

} // namespace oz::services
