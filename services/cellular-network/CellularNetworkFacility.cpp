#include "cellular-network/CellularNetworkPublisher.hpp"
#include "cellular-network/SimulatedNetworks.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility cellularNetworkFacility()
{
    return describeFacility<CellularNetworkSource, CellularNetworkPublisher, SimulatedNetworks>(
        QStringLiteral("cellular-network"));
}

} // namespace oz::services
