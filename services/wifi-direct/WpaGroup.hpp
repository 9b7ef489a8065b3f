#pragma once

#include "linux/NetworkAddresses.hpp"
#include "linux/NetworkdLeases.hpp"
#include "linux/WpaSupplicant.hpp"
#include "wifi-direct/WpaPeers.hpp"

#include <QElapsedTimer>

namespace oz::services {

/*!
 * The group that the radio is in: its own interface, which wpa_supplicant makes for it, its members, and
 * their addresses. It is there from GroupStarted until it has finished, or until its interface is removed,
 * which may come alone.
 */
class WpaGroup : public QObject
{
    Q_OBJECT

public:
    using Group = WiFiDirectState::Group;
    using Member = WiFiDirectState::ConnectedPeer;

    WpaGroup(WpaSupplicant &supplicant, const WpaPeers &peers, NetworkdLeases &leases);

    /*! Nothing while there is none. */
    [[nodiscard]] const std::optional<Group> &group() const { return m_group; }
    /*! The members in the order in which they joined. One is listed with its IP address, or without where it
     * got none for a while, as applications are told once of its coming. */
    [[nodiscard]] QList<Member> members() const;
    [[nodiscard]] bool contains(const QString &address) const;

    /*! Takes over a group that was there before, and then calls \a done, also where there is none. */
    void findPresent(const std::function<void()> &done);
    /*! Supplies the owner's IP address of a group that was there before: a handshake tells it once. */
    void setOwnerIpAddress(const QString &address);
    /*! Ends it; \a done is called with the answer. */
    void end(QObject *context, const WpaSupplicant::Answered &done);
    /*! Forgets it, which has ended without a word. */
    void forget();

Q_SIGNALS:
    void started();
    /*! Something about it has changed. */
    void changed();
    void ended();

private:
    struct Joined
    {
        Member member;
        QString hardware; // the address that it has in the group; empty while unknown
        QElapsedTimer since;
    };

    void begin(const QVariantMap &properties, const std::function<void()> &done);
    void onStation(const QString &hardware);
    void take(WiFiDirectState::Role role, const QVariantMap &link, const QVariantMap &p2p,
        const QVariantMap &properties);
    void add(const QString &object);
    void remove(const QString &object);
    [[nodiscard]] QString addressOf(const QString &hardware) const;
    void readAddresses();
    void awaitAddresses();
    void finish();

    WpaSupplicant &m_supplicant;
    const WpaPeers &m_peers;
    NetworkdLeases &m_leases;
    NetworkAddresses m_addresses;
    QString m_interface; // the object of the group's interface; empty while there is no group
    QString m_object;
    std::optional<Group> m_group; // once it has been read
    QString m_givenOwnerAddress; // by the handshake
    QList<Joined> m_joined;
    QMap<QString, QString> m_hardware; // by the address of the device, as the negotiation tells it
    QTimer m_addressing; // while a member has no address
};

} // namespace oz::services
