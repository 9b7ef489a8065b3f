#include "facility/Facility.hpp"
#include "sdcard/SdCardPublisher.hpp"
#include "sdcard/SimulatedSdCard.hpp"
#include "sdcard/UDisksSdCard.hpp"

namespace oz::services {

Facility sdcardFacility()
{
    const SourceKind udisks{QStringLiteral("udisks2"), QStringLiteral("the removable flash card, by UDisks2"),
        {QStringLiteral("device")},
        [](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<UDisksSdCard>(
                providers.shared<SystemBus>(), options.value(QStringLiteral("device")));
        },
        noObstacle};
    return describeFacility<SdCardSource, SdCardPublisher, SimulatedSdCard>(
        QStringLiteral("sdcard"), {udisks});
}

} // namespace oz::services
