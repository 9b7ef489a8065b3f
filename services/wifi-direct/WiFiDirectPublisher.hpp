#pragma once

#include "publishing/ControlObject.hpp"
#include "publishing/FieldsPublisher.hpp"
#include "wifi-direct/WiFiDirectState.hpp"

namespace oz::services {

/*!
 * The Wi-Fi Direct manager. It publishes "/pps/services/wifi_p2p/manager/status": "p2p_mgr_enabled" (0
 * enabled, 1 disabled, 2 not supported), "scanning", "last_discover_update", "connection",
 * "discovered_devices" and "connected_devices"; and serves "control" beside it, with the requests
 * "wifi_p2p_scan_and_listen", "wifi_p2p_connect", "wifi_p2p_cancel_connect", "wifi_p2p_start_session",
 * "wifi_p2p_stop_session" and "wifi_p2p_get_ip_address".
 *
 * The state holds the group's password, so it is for the owner and the group of the daemon only, and so is
 * the control object: who may not know the group has no business in it. Sessions outlive the client that
 * asked for them.
 */
class WiFiDirectPublisher final : public FieldsPublisher<WiFiDirectSource>
{
public:
    WiFiDirectPublisher(const QString &facility, WiFiDirectSource &source, Tree &tree);

    [[nodiscard]] FaultsByInstance faults() override { return {{QString(), &m_control.faults()}}; }

private:
    [[nodiscard]] RequestTable requests();
    void connectPeer(const Request &request, const Answer &answer);

    ControlObject m_control;
};

} // namespace oz::services
