#include "facility/ModemKind.hpp"
#include "hardware/HardwarePublisher.hpp"
#include "hardware/LinuxHardware.hpp"
#include "hardware/SimulatedHardware.hpp"

namespace oz::services {

Facility hardwareFacility()
{
    const SourceKind system{QStringLiteral("linux"),
        QStringLiteral("the device that Linux runs on, by the kernel, udev and hostnamed"), {},
        [](Providers &providers, const SourceOptions &) -> std::shared_ptr<Source> {
            return std::make_shared<LinuxHardware>(providers.shared<SystemBus>(), modemManagerOf(providers));
        },
        noObstacle};
    return describeFacility<HardwareSource, SimulatedHardware>(QStringLiteral("hardware"),
        QStringLiteral("Hardware"), {&deviceIdentifierFields(), &deviceNameFields(), &inventoryFields()},
        {system})
        .publishedBy<HardwarePublisher, MiracastSupport>();
}

} // namespace oz::services
