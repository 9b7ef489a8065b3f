#pragma once

#include "linux/ModemManager.hpp"
#include "simcard/SimCard.hpp"

namespace oz::services {

/*! The SIM card of the modem's slot in use, as ModemManager tells of it. */
class ModemSimCard final : public ModemSource<SimCardSource>
{
public:
    ModemSimCard(std::shared_ptr<ModemManager> manager, const QString &modem)
        : ModemSource(std::move(manager), modem)
    {
    }

private:
    void readState() override;
};

} // namespace oz::services
