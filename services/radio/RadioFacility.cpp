#include "facility/ModemKind.hpp"
#include "radio/ModemRadio.hpp"
#include "radio/RadioPublisher.hpp"
#include "radio/SimulatedRadio.hpp"

namespace oz::services {

Facility radioFacility()
{
    return describeFacility<RadioSource, SimulatedRadio>(QStringLiteral("radio"), QStringLiteral("Radio"),
        {&radioFields(), &radioChoiceFields()},
        {modemKind<ModemRadio>(QStringLiteral("the radio of a modem, by ModemManager"))})
        .publishedBy<RadioPublisher>();
}

} // namespace oz::services
