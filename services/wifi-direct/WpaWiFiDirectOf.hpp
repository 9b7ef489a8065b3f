#pragma once

#include "facility/Facility.hpp"
#include "wifi-direct/WpaWiFiDirect.hpp"

namespace oz::services {

/*! Wi-Fi Direct by wpa_supplicant, which wireless displays on the air use too; \a interface counts for who
 * asks first. */
[[nodiscard]] inline std::shared_ptr<WpaWiFiDirect> wpaWiFiDirectOf(
    Providers &providers, const QString &interface = {})
{
    return providers.shared<WpaWiFiDirect>([&] {
        auto bus = providers.shared<SystemBus>();
        auto supplicant = std::make_shared<WpaSupplicant>(bus, interface);
        return std::make_shared<WpaWiFiDirect>(std::move(bus), std::move(supplicant), providers.store());
    });
}

} // namespace oz::services
