#include "facility/Facility.hpp"
#include "led/LedPublisher.hpp"
#include "led/SimulatedLed.hpp"

namespace oz::services {

Facility ledFacility()
{
    return describeFacility<LedSource, LedPublisher, SimulatedLed>(QStringLiteral("led"));
}

} // namespace oz::services
