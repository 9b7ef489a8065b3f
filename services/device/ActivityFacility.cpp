#include "device/LogindActivity.hpp"
#include "device/PowerManager.hpp"
#include "device/SimulatedActivity.hpp"
#include "facility/BusKind.hpp"

namespace oz::services {

Facility activityFacility()
{
    return describeFacility<ActivitySource, SimulatedActivity>(QStringLiteral("activity"),
        QStringLiteral("Activity"), {&activityFields()},
        {busKind<LogindActivity>(QStringLiteral("logind"),
            QStringLiteral("whether the sessions of a seat are idle, by logind"), QStringLiteral("seat"))})
        .publishedBy<PowerManager>();
}

} // namespace oz::services
