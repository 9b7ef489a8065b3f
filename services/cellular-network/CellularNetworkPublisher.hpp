#pragma once

#include "cellular-network/CellularNetworkSource.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*!
 * Publishes, in "/pps/services/cellular/radioctrl/", "status_cell_public" and "status_cell_private" for the
 * primary network and "status_cell_cdma_public" and "status_cell_cdma_private" for the CDMA 1X network, the
 * private ones for owner and group only; and "/pps/services/rum/csm/status_public" with "network_name". The
 * objects of a network that is not there have no attributes.
 */
class CellularNetworkPublisher final : public PublisherOf<CellularNetworkSource>
{
public:
    CellularNetworkPublisher(const QString &facility, CellularNetworkSource &source, Tree &tree);

private:
    struct Objects
    {
        Objects(Tree &tree, const QString &prefix);
        void publish(const std::optional<CellularNetworkState::Network> &network);

        StatePublisher publicObject;
        StatePublisher privateObject;
    };

    void publishState(const CellularNetworkState &state) override;

    Objects m_primary;
    Objects m_cdma1x;
    StatePublisher m_settings;
};

} // namespace oz::services
