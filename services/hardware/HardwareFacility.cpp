#include "facility/Facility.hpp"
#include "hardware/HardwarePublisher.hpp"
#include "hardware/SimulatedHardware.hpp"

namespace oz::services {

Facility hardwareFacility()
{
    return describeFacility<HardwareSource, HardwarePublisher, SimulatedHardware, MiracastSource>(
        QStringLiteral("hardware"));
}

} // namespace oz::services
