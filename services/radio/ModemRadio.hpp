#pragma once

#include "linux/ModemManager.hpp"
#include "radio/Radio.hpp"

namespace oz::services {

/*! The radio of a modem, as ModemManager tells of it. */
class ModemRadio final : public ModemSource<RadioSource>
{
public:
    ModemRadio(std::shared_ptr<ModemManager> manager, const QString &modem)
        : ModemSource(std::move(manager), modem)
    {
    }

private:
    void readState() override;
};

} // namespace oz::services
