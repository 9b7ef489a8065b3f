#include "facility/Facility.hpp"
#include "simcard/SimCardPublisher.hpp"
#include "simcard/SimulatedSimCard.hpp"

namespace oz::services {

Facility simcardFacility()
{
    return describeFacility<SimCardSource, SimCardPublisher, SimulatedSimCard>(QStringLiteral("simcard"));
}

} // namespace oz::services
