#include "facility/BusKind.hpp"
#include "sdcard/SimulatedSdCard.hpp"
#include "sdcard/UDisksSdCard.hpp"

namespace oz::services {

Facility sdcardFacility()
{
    return describeFacility<SdCardSource, SimulatedSdCard>(QStringLiteral("sdcard"),
        QStringLiteral("SD card"), {&sdCardFields()},
        {busKind<UDisksSdCard>(QStringLiteral("udisks2"),
            QStringLiteral("the removable flash card, by UDisks2"), QStringLiteral("device"))});
}

} // namespace oz::services
