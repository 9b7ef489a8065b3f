#include "cellular-network/ModemNetworks.hpp"
#include "cellular-network/NetworkRecorder.hpp"
#include "cellular-network/SimulatedNetworks.hpp"
#include "facility/ModemKind.hpp"

namespace oz::services {

Facility cellularNetworkFacility()
{
    return describeFacility<CellularNetworkSource, SimulatedNetworks>(QStringLiteral("cellular-network"),
        QStringLiteral("Cellular networks"),
        {&primaryNetworkFields(), &primaryCellFields(), &cdma1xNetworkFields(), &cdma1xCellFields(),
            &networkNameFields()},
        {modemKind<ModemNetworks>(QStringLiteral("the network that a modem is in, by ModemManager"))})
        .recordedBy<NetworkRecorder>();
}

} // namespace oz::services
