#include "facility/Facility.hpp"
#include "vibration/SimulatedVibrator.hpp"
#include "vibration/VibrationPublisher.hpp"

namespace oz::services {

Facility vibrationFacility()
{
    return describeFacility<VibrationSource, VibrationPublisher, SimulatedVibrator>(
        QStringLiteral("vibration"));
}

} // namespace oz::services
