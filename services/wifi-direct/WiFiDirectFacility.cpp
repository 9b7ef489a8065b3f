#include "facility/Facility.hpp"
#include "linux/WpaSupplicant.hpp"
#include "wifi-direct/SimulatedWiFiDirect.hpp"
#include "wifi-direct/WiFiDirectPublisher.hpp"
#include "wifi-direct/WiFiDirectRecorder.hpp"
#include "wifi-direct/WpaWiFiDirect.hpp"

namespace oz::services {

Facility wifiDirectFacility()
{
    const QString interface = QStringLiteral("interface");
    const SourceKind wpaSupplicant{QStringLiteral("wpa-supplicant"),
        QStringLiteral("a Wi-Fi radio, by wpa_supplicant"), {interface},
        [interface](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            auto bus = providers.shared<SystemBus>();
            auto supplicant = providers.shared<WpaSupplicant>(
                [&] { return std::make_shared<WpaSupplicant>(bus, options.value(interface)); });
            return std::make_shared<WpaWiFiDirect>(std::move(bus), std::move(supplicant), providers.store());
        },
        noObstacle};
    return describeFacility<WiFiDirectSource, SimulatedWiFiDirect>(
        QStringLiteral("wifi-direct"), QStringLiteral("Wi-Fi Direct"), {&wifiDirectFields()}, {wpaSupplicant})
        .asked(wifiDirectRequests())
        .publishedBy<WiFiDirectPublisher>()
        .recordedBy<WiFiDirectRecorder>();
}

} // namespace oz::services
