#include "cellular-network/CellularNetworkPublisher.hpp"
#include "cellular-network/ModemNetworks.hpp"
#include "cellular-network/SimulatedNetworks.hpp"
#include "facility/ModemKind.hpp"

namespace oz::services {

Facility cellularNetworkFacility()
{
    return describeFacility<CellularNetworkSource, CellularNetworkPublisher, SimulatedNetworks>(
        QStringLiteral("cellular-network"),
        {modemKind<ModemNetworks>(QStringLiteral("the network that a modem is in, by ModemManager"))});
}

} // namespace oz::services
