#pragma once

#include "cellular/Cellular.hpp"

namespace oz::services {

/*! The technologies, and the services, that a modem names as its access technologies. */
[[nodiscard]] QList<Technology> technologiesIn(uint accessTechnologies);
[[nodiscard]] CellularServices servicesIn(uint accessTechnologies);
/*! True if a modem with this state of registration is in a network that it may use. */
[[nodiscard]] bool isRegistered(uint registrationState);

} // namespace oz::services
