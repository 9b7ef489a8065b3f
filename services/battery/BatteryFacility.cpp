#include "battery/BatteryPublisher.hpp"
#include "battery/SimulatedBattery.hpp"
#include "battery/UPowerBattery.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility batteryFacility()
{
    const SourceKind upower{QStringLiteral("upower"),
        QStringLiteral("the battery and its chargers, by UPower"), {QStringLiteral("device")},
        [](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<UPowerBattery>(
                providers.shared<SystemBus>(), options.value(QStringLiteral("device")));
        },
        noObstacle};
    return describeFacility<BatterySource, BatteryPublisher, SimulatedBattery>(
        QStringLiteral("battery"), {upower});
}

} // namespace oz::services
