#pragma once

#include "core/Mishaps.hpp"

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

namespace oz::services {

/*! Wi-Fi Direct: the peers around, and the group that the phone is in, whoever knows them. */
class WiFiDirectSource : public QObject
{
    Q_OBJECT

public:
    enum class Availability { Enabled, Disabled, NotSupported };
    enum class Role { GroupOwner, Client };
    enum class Intent { GroupOwner, Client, Any };
    enum class WpsMethod { PushButton, RandomPin, PresetPin };

    /*! A peer in sight. */
    struct Peer
    {
        QString address; //!< of its hardware
        QString name; //!< any text
        QString type; //!< primary device type of Wi-Fi Protected Setup: "7-0050F204-1"
        std::optional<QString> ssid; //!< of the group that it owns
        std::optional<QString> ownerAddress; //!< of the group that it is a client of
        std::optional<QString> displayInfo; //!< of one that supports wireless display
    };

    struct ConnectedPeer
    {
        QString address;
        QString name;
        QString type;
        Role role = Role::Client;
        QString ipAddress;
    };

    struct Group
    {
        QString interface;
        Role role = Role::Client; //!< of the phone
        QString ssid;
        QString ownerAddress;
        QString ownerIpAddress;
        QString password;
    };

    struct State
    {
        Availability availability = Availability::Enabled;
        bool scanning = false;
        std::optional<qint64> lastDiscovery; //!< seconds since the epoch
        bool connecting = false;
        std::optional<Group> group; //!< while connected
        QList<Peer> visible;
        QList<ConnectedPeer> connected;
    };

    struct ConnectRequest
    {
        QString address;
        Intent intent = Intent::Any;
        WpsMethod method = WpsMethod::PushButton;
        QString pin; //!< empty for none
    };

    /*! What became of a request; an error is an errno that is not 0. */
    struct Result
    {
        QString text; //!< what was asked for: a session's key, an IP address
        int error = 0;
        QString errorText;
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;
    /*! Each request is answered at once; the state tells how it goes on. */
    [[nodiscard]] virtual Result scan() = 0;
    [[nodiscard]] virtual Result connectPeer(const ConnectRequest &request) = 0;
    [[nodiscard]] virtual Result cancelConnect() = 0;
    [[nodiscard]] virtual Result startSession() = 0;
    [[nodiscard]] virtual Result stopSession(const QString &key) = 0;
    [[nodiscard]] virtual Result ipAddress(const QString &address) = 0;
    /*! What goes wrong with the request \a message that has come, where that can be arranged. */
    [[nodiscard]] virtual std::optional<Mishap> takeMishap(const QString & /*message*/) { return {}; }

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
