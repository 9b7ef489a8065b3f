#include "facility/Facility.hpp"
#include "miracast/MiracastPublisher.hpp"
#include "miracast/SimulatedMiracast.hpp"

namespace oz::services {

Facility miracastFacility()
{
    return describeFacility<MiracastSource, MiracastPublisher, SimulatedMiracast>(QStringLiteral("miracast"));
}

} // namespace oz::services
