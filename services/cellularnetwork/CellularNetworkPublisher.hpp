#pragma once

#include "cellularnetwork/CellularNetworkSource.hpp"
#include "core/StatePublisher.hpp"

namespace oz::services {

/*!
 * Publishes, in "/pps/services/cellular/radioctrl/", "status_cell_public" and "status_cell_private" for the
 * primary network and "status_cell_cdma_public" and "status_cell_cdma_private" for the CDMA 1X network, the
 * private ones for owner and group only; and "/pps/services/rum/csm/status_public" with "network_name". The
 * objects of a network that is not there have no attributes.
 */
class CellularNetworkPublisher : public QObject
{
public:
    explicit CellularNetworkPublisher(CellularNetworkSource &source);

private:
    struct Objects
    {
        explicit Objects(const QString &prefix);
        void publish(const std::optional<CellularNetworkSource::Network> &network);

        StatePublisher publicObject;
        StatePublisher privateObject;
    };

    void publish();

    CellularNetworkSource &m_source;
    Objects m_primary;
    Objects m_cdma1x;
    StatePublisher m_settings;
};

} // namespace oz::services
