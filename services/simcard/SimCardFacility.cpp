#include "facility/ModemKind.hpp"
#include "simcard/ModemSimCard.hpp"
#include "simcard/SimCardPublisher.hpp"
#include "simcard/SimulatedSimCard.hpp"

namespace oz::services {

Facility simcardFacility()
{
    return describeFacility<SimCardSource, SimCardPublisher, SimulatedSimCard>(QStringLiteral("simcard"),
        {modemKind<ModemSimCard>(QStringLiteral("the SIM card of a modem, by ModemManager"))});
}

} // namespace oz::services
