#include "facility/ModemKind.hpp"
#include "simcard/ModemSimCard.hpp"
#include "simcard/SimulatedSimCard.hpp"

namespace oz::services {

Facility simcardFacility()
{
    return describeFacility<SimCardSource, SimulatedSimCard>(QStringLiteral("simcard"),
        QStringLiteral("SIM card"), {&simCardFields(), &subscriberFields()},
        {modemKind<ModemSimCard>(QStringLiteral("the SIM card of a modem, by ModemManager"))});
}

} // namespace oz::services
