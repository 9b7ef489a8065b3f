#pragma once

#include "cellular-network/CellularNetworks.hpp"
#include "linux/ModemManager.hpp"

namespace oz::services {

/*! The network that a modem is registered in, as ModemManager tells of it. */
class ModemNetworks final : public ModemSource<CellularNetworkSource>
{
public:
    ModemNetworks(std::shared_ptr<ModemManager> manager, const QString &modem)
        : ModemSource(std::move(manager), modem)
    {
    }

private:
    void readState() override;
    [[nodiscard]] std::optional<int> signalStrength() const;
};

} // namespace oz::services
