#include "facility/Facility.hpp"
#include "sdcard/SdCardPublisher.hpp"
#include "sdcard/SimulatedSdCard.hpp"

namespace oz::services {

Facility sdcardFacility()
{
    return describeFacility<SdCardSource, SdCardPublisher, SimulatedSdCard>(QStringLiteral("sdcard"));
}

} // namespace oz::services
