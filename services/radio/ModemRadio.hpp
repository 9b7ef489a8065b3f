#pragma once

#include "linux/ModemManager.hpp"
#include "radio/RadioSource.hpp"

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
    void look() override;
};

/*! The technologies, and the services, that a modem names as its access technologies. */
[[nodiscard]] QList<Technology> technologiesIn(uint accessTechnologies);
[[nodiscard]] CellularServices servicesIn(uint accessTechnologies);
/*! Whether a modem with this state of registration is in a network that it may use. */
[[nodiscard]] bool isRegistered(uint registrationState);

} // namespace oz::services
