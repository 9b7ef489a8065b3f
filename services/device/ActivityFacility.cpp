#include "device/LogindActivity.hpp"
#include "device/PowerManager.hpp"
#include "device/SimulatedActivity.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility activityFacility()
{
    const SourceKind logind{QStringLiteral("logind"),
        QStringLiteral("whether the sessions of a seat are idle, by logind"), {QStringLiteral("seat")},
        [](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<LogindActivity>(
                providers.shared<SystemBus>(), options.value(QStringLiteral("seat")));
        },
        noObstacle};
    return describeFacility<ActivitySource, PowerManager, SimulatedActivity>(
        QStringLiteral("activity"), {logind});
}

} // namespace oz::services
