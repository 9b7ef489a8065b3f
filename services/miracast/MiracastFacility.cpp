#include "facility/Facility.hpp"
#include "miracast/MiracastPublisher.hpp"
#include "miracast/MiracastRecorder.hpp"
#include "miracast/SimulatedMiracast.hpp"
#include "miracast/WirelessDisplayKind.hpp"

namespace oz::services {

Facility miracastFacility()
{
    return describeFacility<MiracastSource, SimulatedMiracast>(QStringLiteral("miracast"),
        QStringLiteral("Miracast"), {&miracastFields(), &sinkFields()}, {wirelessDisplayKind()})
        .asked(miracastRequests())
        .publishedBy<MiracastPublisher>()
        .recordedBy<MiracastRecorder>();
}

} // namespace oz::services
