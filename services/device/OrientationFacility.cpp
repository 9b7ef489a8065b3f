#include "device/OrientationPublisher.hpp"
#include "device/SimulatedOrientation.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility orientationFacility()
{
    return describeFacility<OrientationSource, OrientationPublisher, SimulatedOrientation>(
        QStringLiteral("orientation"));
}

} // namespace oz::services
