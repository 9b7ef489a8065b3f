#include "data-profile/DataProfilePublisher.hpp"
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
    return describeFacility<DataProfileSource, DataProfilePublisher, SimulatedDataProfiles>(
        QStringLiteral("data-profile"), {networkManager});
}

} // namespace oz::services
