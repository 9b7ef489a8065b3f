#include "facility/Facility.hpp"
#include "wifi-direct/SimulatedWiFiDirect.hpp"
#include "wifi-direct/WiFiDirectPublisher.hpp"

namespace oz::services {

Facility wifiDirectFacility()
{
    return describeFacility<WiFiDirectSource, WiFiDirectPublisher, SimulatedWiFiDirect>(
        QStringLiteral("wifi-direct"));
}

} // namespace oz::services
