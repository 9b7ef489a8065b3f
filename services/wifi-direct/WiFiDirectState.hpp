#pragma once

#include "source/Source.hpp"
#include "table/AskedRequest.hpp"
#include "table/Fields.hpp"

#include <QList>

namespace oz::services {

/*! Wi-Fi Direct: the peers around, and the group that the device is in, as any source knows them. */
struct WiFiDirectState
{
    enum class Availability { Enabled, Disabled, NotSupported };
    enum class Role { GroupOwner, Client };

    /*! A peer in sight. */
    struct Peer
    {
        QString address; //!< of its hardware
        QString name; //!< any text
        QString type; //!< primary device type of Wi-Fi Protected Setup: "7-0050F204-1"
        std::optional<QString> ssid; //!< of the group that it owns
        std::optional<QString> ownerAddress; //!< of the group that it is a client of
        std::optional<QString> displayInfo; //!< of one that supports wireless display

        bool operator==(const Peer &) const = default;
    };

    struct ConnectedPeer
    {
        QString address;
        QString name;
        QString type;
        Role role = Role::Client;
        QString ipAddress;

        bool operator==(const ConnectedPeer &) const = default;
    };

    struct Group
    {
        QString interface;
        Role role = Role::Client; //!< of the phone
        QString ssid;
        QString ownerAddress;
        QString ownerIpAddress;
        QString password;

        bool operator==(const Group &) const = default;
    };

    std::optional<Availability> availability;
    bool scanning = false;
    std::optional<qint64> lastDiscovery; //!< seconds since the epoch
    bool connecting = false;
    std::optional<Group> group; //!< while connected
    QList<Peer> visible;
    QList<ConnectedPeer> connected;

    bool operator==(const WiFiDirectState &) const = default;
};

class WiFiDirectSource : public StateSource<WiFiDirectState>
{
public:
    enum class Intent { GroupOwner, Client, Any };
    enum class WpsMethod { PushButton, RandomPin, PresetPin };

    struct ConnectRequest
    {
        QString address;
        Intent intent = Intent::Any;
        WpsMethod method = WpsMethod::PushButton;
        QString pin; //!< empty for none
    };

    /*! The answer says whether it has begun; the state tells how it goes on. */
    virtual void scan(const Done &done) = 0;
    virtual void connectPeer(const ConnectRequest &request, const Done &done) = 0;
    virtual void cancelConnect(const Done &done) = 0;
    /*! The outcome's text is the session's key. */
    virtual void startSession(const Done &done) = 0;
    virtual void stopSession(const QString &key, const Done &done) = 0;
    /*! The outcome's text is the IP address of the connected peer at the hardware address \a address. */
    virtual void ipAddress(const QString &address, const Done &done) = 0;
};

/*! How it stands in the tree. */
[[nodiscard]] const Fields<WiFiDirectState> &wifiDirectFields();
/*! The requests that applications make, and the object that serves them. */
[[nodiscard]] std::vector<AskedRequest> wifiDirectRequests();
inline const QString WiFiDirectControl = QStringLiteral("/pps/services/wifi_p2p/manager/control");

} // namespace oz::services
