#include "facility/Facility.hpp"
#include "wifi-direct/SimulatedWiFiDirect.hpp"
#include "wifi-direct/WiFiDirectPublisher.hpp"
#include "wifi-direct/WiFiDirectRecorder.hpp"
#include "wifi-direct/WpaWiFiDirectOf.hpp"

namespace oz::services {

Facility wifiDirectFacility()
{
    const QString interface = QStringLiteral("interface");
    const SourceKind wpaSupplicant{QStringLiteral("wpa-supplicant"),
        QStringLiteral("a Wi-Fi radio, by wpa_supplicant"), {interface},
        [interface](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            return wpaWiFiDirectOf(providers, options.value(interface));
        },
        noObstacle};
    return describeFacility<WiFiDirectSource, SimulatedWiFiDirect>(
        QStringLiteral("wifi-direct"), QStringLiteral("Wi-Fi Direct"), {&wifiDirectFields()}, {wpaSupplicant})
        .asked(wifiDirectRequests())
        .publishedBy<WiFiDirectPublisher>()
        .recordedBy<WiFiDirectRecorder>();
}

} // namespace oz::services
