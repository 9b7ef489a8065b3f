#include "facility/Facility.hpp"
#include "wifi-direct/SimulatedWiFiDirect.hpp"
#include "wifi-direct/WiFiDirectPublisher.hpp"
#include "wifi-direct/WiFiDirectRecorder.hpp"

namespace oz::services {

Facility wifiDirectFacility()
{
    return describeFacility<WiFiDirectSource, SimulatedWiFiDirect>(
        QStringLiteral("wifi-direct"), QStringLiteral("Wi-Fi Direct"), {&wifiDirectFields()})
        .asked(wifiDirectRequests())
        .publishedBy<WiFiDirectPublisher>()
        .recordedBy<WiFiDirectRecorder>();
}

} // namespace oz::services
