#pragma once

#include "publishing/StateStore.hpp"
#include "wifi-direct/WiFiDirectActivity.hpp"
#include "wifi-direct/WiFiDirectSessions.hpp"
#include "wifi-direct/WpaConnecting.hpp"
#include "wifi-direct/WpaGroup.hpp"

namespace oz::services {

/*!
 * Wi-Fi Direct of a real radio, by wpa_supplicant. After a restart of wpa_supplicant, which forgets
 * everything, the peers of before stay for the grace time, in which they are looked for; a group of before is
 * gone at once. Where NetworkManager owns the radio, connections are its own.
 */
class WpaWiFiDirect final : public WiFiDirectSource
{
public:
    WpaWiFiDirect(
        std::shared_ptr<SystemBus> bus, std::shared_ptr<WpaSupplicant> supplicant, StateStore &store);

    /*! The radio, for what is not Wi-Fi Direct's alone. */
    [[nodiscard]] WpaSupplicant &supplicant() { return *m_supplicant; }
    /*! Why the last connection failed. */
    [[nodiscard]] WpaConnecting::Failure failure() const { return m_connecting.failure(); }
    /*! False if a peer says that it has no button to push. */
    [[nodiscard]] bool hasPushButton(const QString &address) const { return m_peers.hasPushButton(address); }

    void scan(const Done &done) override;
    void connectPeer(const ConnectRequest &request, const Done &done) override;
    void cancelConnect(const Done &done) override;
    void startSession(const Done &done) override;
    void stopSession(const QString &key, const Done &done) override;
    void ipAddress(const QString &address, const Done &done) override;

private:
    void onRadio();
    void onEnabled();
    void findAgain();
    void onGroup();
    void onGroupEnded();
    void endGroup(const WpaSupplicant::Answered &done);
    void endScan();
    void noteDiscovery();
    void tell();
    void updateRemark();
    void save();
    [[nodiscard]] QString sessionGroup() const;
    [[nodiscard]] WiFiDirectActivity activity() const;

    std::shared_ptr<WpaSupplicant> m_supplicant;
    StateStore &m_store;
    NetworkManagerP2p m_manager;
    NetworkdLeases m_leases;
    WpaPeers m_peers;
    WpaGroup m_group;
    WpaConnecting m_connecting;
    bool m_isReading = false; // what a radio that has come knows
    QTimer m_scan; // until wpa_supplicant should have said that it is over
    std::optional<qint64> m_lastDiscovery;
    QTimer m_grace; // for the peers of before a restart
    WiFiDirectSessions m_sessions;
};

} // namespace oz::services
