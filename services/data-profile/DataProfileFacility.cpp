#include "data-profile/DataProfilePublisher.hpp"
#include "data-profile/DataProfileRecorder.hpp"
#include "data-profile/NetworkManagerProfiles.hpp"
#include "data-profile/SimulatedDataProfiles.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility dataProfileFacility()
{
    const SourceKind networkManager{QStringLiteral("networkmanager"),
        QStringLiteral("the mobile connections of NetworkManager"), {},
        [](Providers &providers, const SourceOptions &) -> std::shared_ptr<Source> {
            return std::make_shared<NetworkManagerProfiles>(providers.shared<SystemBus>(), providers.store());
        },
        noObstacle};
    return describeFacility<DataProfileSource, SimulatedDataProfiles>(QStringLiteral("data-profile"),
        QStringLiteral("Data profiles"), {&mobileDataFields()}, {networkManager})
        .saying(dataProfileFields().fields())
        .asked(dataProfileRequests())
        .publishedBy<DataProfilePublisher>()
        .recordedBy<DataProfileRecorder>();
}

} // namespace oz::services
