#include "facility/Facility.hpp"
#include "led/LedActivity.hpp"
#include "led/LedPublisher.hpp"
#include "led/SimulatedLed.hpp"
#include "led/SysfsLed.hpp"

namespace oz::services {

Facility ledFacility()
{
    const SourceKind sysfs{QStringLiteral("sysfs"), QStringLiteral("the kernel's LED for notifications"),
        {QStringLiteral("device")},
        [](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<SysfsLed>(providers.store(), options.value(QStringLiteral("device")));
        },
        noObstacle};
    return describeFacility<LedSource, SimulatedLed>(
        QStringLiteral("led"), QStringLiteral("LED"), {&ledFields()}, {sysfs})
        .saying(ledActivityFields().fields())
        .asked(ledRequests())
        .publishedBy<LedPublisher>();
}

} // namespace oz::services
