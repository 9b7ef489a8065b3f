#include "facility/Facility.hpp"
#include "vibration/EvdevVibrator.hpp"
#include "vibration/SimulatedVibrator.hpp"
#include "vibration/VibrationPublisher.hpp"

namespace oz::services {

Facility vibrationFacility()
{
    const SourceKind evdev{QStringLiteral("evdev"),
        QStringLiteral("the motor that is an input device with force feedback"), {QStringLiteral("device")},
        [](Providers &, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<EvdevVibrator>(options.value(QStringLiteral("device")));
        },
        noObstacle};
    return describeFacility<VibrationSource, SimulatedVibrator>(
        QStringLiteral("vibration"), QStringLiteral("Vibration"), {}, {evdev})
        .saying(vibrationActivityFields().fields())
        .asked(vibrationRequests())
        .publishedBy<VibrationPublisher>();
}

} // namespace oz::services
