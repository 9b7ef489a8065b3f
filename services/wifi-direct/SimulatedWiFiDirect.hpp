#pragma once

#include "phone/Surroundings.hpp"
#include "wifi-direct/WiFiDirectActivity.hpp"
#include "wifi-direct/WiFiDirectSessions.hpp"

namespace oz::services {

/*!
 * The phone's Wi-Fi Direct and the peers around it: the section "wifi-direct". A peer in range comes into
 * sight during a scan and is out of sight as soon as it is out of range. There is one connection at a time;
 * it ends with the last of its sessions, with the last peer of a group that the phone owns, or with the peer
 * that owns the group.
 */
class SimulatedWiFiDirect final : public WiFiDirectSource, public PartOfTable<SimulatedWiFiDirect>
{
public:
    SimulatedWiFiDirect(const JsonNode &section, SimulatedParts &phone);

    void scan(const Done &done) override;
    void connectPeer(const ConnectRequest &request, const Done &done) override;
    void cancelConnect(const Done &done) override;
    void startSession(const Done &done) override;
    void stopSession(const QString &key, const Done &done) override;
    void ipAddress(const QString &address, const Done &done) override;

    [[nodiscard]] static const Settings<SimulatedWiFiDirect> &table();
    [[nodiscard]] static InstanceSettings instanceSettings()
    {
        return {QStringLiteral("peers"), Known::table().of(nullptr)};
    }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] Neighbourhood neighbourhood() const override;
    [[nodiscard]] QVariantMap saved() override;
    void restore(const QVariantMap &saved) override;

private:
    using Group = WiFiDirectState::Group;
    using Peer = WiFiDirectState::Peer;
    using Role = WiFiDirectState::Role;

    // The role of a peer in a group that is not the phone's.
    enum class Elsewhere { None, Owner, Client };

    struct Known
    {
        Peer peer;
        QString ssid; // of a group that it owns
        QString password;
        QString pin;
        QStringList methods; // of Wi-Fi Protected Setup, that it takes part in
        Intent intent = Intent::Any;
        Elsewhere elsewhere = Elsewhere::None;
        bool inRange = true;

        [[nodiscard]] static const Settings<Known> &table();
        [[nodiscard]] const QString &name() const { return peer.name; }
        [[nodiscard]] const QString &address() const { return peer.address; }
    };

    struct Member
    {
        QString key;
        Role role;
        int host; // the last number of its IP address
    };

    // It goes on until its timer ends it, or as long as verbs say so.
    struct Activity
    {
        PhoneTimer timer;
        bool isHeld = false;

        [[nodiscard]] bool isOn() const { return isHeld || timer.isActive(); }
        void end()
        {
            timer.stop();
            isHeld = false;
        }
    };

    void update() override;
    /*! In the order of WpsMethod. */
    [[nodiscard]] static QStringList methodWords();
    void letJoin(const QString &key, const Known &peer);
    void see(const QStringList &keys);
    void enterGroup(const QString &roleWord, const QStringList &keys);
    [[nodiscard]] QString visibleAt(const QString &address) const;
    [[nodiscard]] bool isMember(const QString &key) const;
    [[nodiscard]] std::optional<Role> roleWith(const Known &peer, Intent intent) const;
    [[nodiscard]] Group groupWith(const Known &peer, Role role) const;
    [[nodiscard]] WiFiDirectActivity activity() const;
    void tell();
    void restoreGroup(const QVariantMap &saved);
    void scanFurther();
    [[nodiscard]] bool showNextPeer();
    void endScan();
    void finishConnecting();
    void join(const QString &key, Role role);
    void leave(const QString &key);
    void endGroup();
    void lose(const QString &key);
    void switchOff();
    void noteDiscovery();

    bool m_supported = true;
    bool m_enabled = true;
    Group m_ownGroup; // as it is while the phone owns one
    std::chrono::milliseconds m_scanTime{};
    std::chrono::milliseconds m_connectTime{};
    Surroundings<Known> m_peers;

    std::optional<qint64> m_lastDiscovery;
    QStringList m_visible;
    Activity m_scan;
    int m_scanSteps = 0; // until the scan ends
    Activity m_connecting;
    ConnectRequest m_request; // while connecting
    std::optional<Group> m_group;
    QList<Member> m_members;
    WiFiDirectSessions m_sessions;
};

} // namespace oz::services
