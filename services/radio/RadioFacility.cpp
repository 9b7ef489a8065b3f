#include "facility/Facility.hpp"
#include "radio/RadioPublisher.hpp"
#include "radio/SimulatedRadio.hpp"

namespace oz::services {

Facility radioFacility()
{
    return describeFacility<RadioSource, RadioPublisher, SimulatedRadio>(QStringLiteral("radio"));
}

} // namespace oz::services
