#include "data-profile/DataProfilePublisher.hpp"
#include "data-profile/SimulatedDataProfiles.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility dataProfileFacility()
{
    return describeFacility<DataProfileSource, DataProfilePublisher, SimulatedDataProfiles>(
        QStringLiteral("data-profile"));
}

} // namespace oz::services
