#pragma once

#include <oz/device/OzDeviceGlobal.hpp>
#include <oz/device/WiFiDirectConnectionState.hpp>
#include <oz/device/WiFiDirectDeviceType.hpp>
#include <oz/device/WiFiDirectIntent.hpp>
#include <oz/device/WiFiDirectResult.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/device/WiFiDirectSecondaryDeviceType.hpp>
#include <oz/device/WiFiDirectWpsMethod.hpp>

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>

namespace oz::device {

class WiFiDirectPrivate;

/*!
 * Wi-Fi Direct: the peers in sight, the group that the phone is in, and requests to scan, to connect to a
 * peer, and to open and close sessions on the connection.
 *
 * The values are there from construction on and change from the event loop. A reading that fails changes
 * nothing. Each other stands for itself: what it lacks is false, empty or Unknown, peers that it lacks are
 * gone, and enabled is true where it is silent about that. So where the object is emptied, because its
 * service stays away, deviceLost and deviceDisconnected tell of each peer. Where Wi-Fi Direct is not
 * supported, or the service's object cannot be opened, at construction, all values stay false, empty or
 * Unknown for the life of this object.
 *
 * A peer is known by its hardware address, exactly as the service writes it; of one that stays in sight,
 * name, type and role are those of its first appearance. Its name is whatever text the peer chose.
 *
 * Source: the object "/pps/services/wifi_p2p/manager/status". Requests go to
 * "/pps/services/wifi_p2p/manager/control". Both may be reserved to certain users, since the one holds the
 * group's password.
 *
 * Use an instance on the thread that created it, and do not move it to another. Requests block that thread
 * until the service answers or goes away, for oz::waitLimit() (60 s) at most: the result is InternalError
 * then. Failures are logged as warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT WiFiDirect : public QObject
{
    Q_OBJECT
    /*! True if a scan is running; false also for unknown. */
    Q_PROPERTY(bool scanning READ isScanning NOTIFY scanningChanged FINAL)
    /*! True if Wi-Fi Direct is switched on; true where the service does not say, false without the service.
     */
    Q_PROPERTY(bool enabled READ isEnabled NOTIFY enabledChanged FINAL)
    /*! As isSupported(): a property of the device, but read anew at each call. */
    Q_PROPERTY(bool supported READ isSupported CONSTANT FINAL)
    /*! When the peers in sight were last updated, to the second, in local time; null for unknown. */
    Q_PROPERTY(QDateTime lastUpdate READ lastUpdate NOTIFY lastUpdateChanged FINAL)
    /*! Unknown where the service does not say. */
    Q_PROPERTY(oz::device::WiFiDirectConnectionState::Type connectionState READ connectionState NOTIFY
            connectionStateChanged FINAL)
    /*! The network interface of the group, such as "p2p0"; empty while not connected. */
    Q_PROPERTY(
        QString networkInterfaceName READ networkInterfaceName NOTIFY networkInterfaceNameChanged FINAL)
    /*! The phone's role in the group: GroupOwner or Client; Unknown while not connected. */
    Q_PROPERTY(oz::device::WiFiDirectRole::Type networkRole READ networkRole NOTIFY networkRoleChanged FINAL)
    /*! The name of the group's network; empty while not connected. */
    Q_PROPERTY(QString networkSsid READ networkSsid NOTIFY networkSsidChanged FINAL)
    /*! The hardware address of the group's owner; empty while not connected. */
    Q_PROPERTY(QString networkOwnerHardwareAddress READ networkOwnerHardwareAddress NOTIFY
            networkOwnerHardwareAddressChanged FINAL)
    /*! The IP address of the group's owner; empty while not connected. */
    Q_PROPERTY(
        QString networkOwnerIpAddress READ networkOwnerIpAddress NOTIFY networkOwnerIpAddressChanged FINAL)
    /*! The password of the group's network; empty while not connected. */
    Q_PROPERTY(QString networkPassword READ networkPassword NOTIFY networkPasswordChanged FINAL)

public:
    /*! Belongs to \a parent. */
    explicit WiFiDirect(QObject *parent = nullptr);
    ~WiFiDirect() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] bool isScanning() const;
    [[nodiscard]] bool isEnabled() const;
    [[nodiscard]] QDateTime lastUpdate() const;
    [[nodiscard]] WiFiDirectConnectionState::Type connectionState() const;
    [[nodiscard]] QString networkInterfaceName() const;
    [[nodiscard]] WiFiDirectRole::Type networkRole() const;
    [[nodiscard]] QString networkSsid() const;
    [[nodiscard]] QString networkOwnerHardwareAddress() const;
    [[nodiscard]] QString networkOwnerIpAddress() const;
    [[nodiscard]] QString networkPassword() const;
    //!@}

    /*!
     * Asks the service to look for peers; a WiFiDirectResult::Type:
     * - Success: scanning and deviceDiscovered tell how it goes on, scanCompleted its end;
     * - Busy: the service answers with the error 16;
     * - DeviceNotFound: with the error 19;
     * - InternalError: with another error, or the exchange failed;
     * - NotSupported: isSupported() is false (nothing is sent), as for every request.
     */
    Q_INVOKABLE int requestScan();
    /*!
     * Opens a session on the connection; a WiFiDirectResult::Type:
     * - Success: sessionStarted brings the session's key after this call has returned;
     * - NoNetworkConnection: the service answers with the error 64;
     * - InternalError: with another error, or the exchange failed.
     */
    Q_INVOKABLE int requestStartSession();
    /*!
     * Closes the session with the key \a session; a WiFiDirectResult::Type:
     * - Success: sessionStopped follows after this call has returned;
     * - InvalidSession: the service answers with the error 22;
     * - NoNetworkConnection: with the error 64;
     * - InternalError: with another error, or the exchange failed.
     */
    Q_INVOKABLE int requestStopSession(const QString &session);
    /*!
     * Asks the service to connect to a peer. \a wpsPin is for the methods with a PIN; it may be empty. The
     * results are those of requestScan(); after Success, connectionState tells how it goes on.
     */
    Q_INVOKABLE oz::device::WiFiDirectResult::Type requestConnect(const QString &hardwareAddress,
        oz::device::WiFiDirectIntent::Type intent, oz::device::WiFiDirectWpsMethod::Type wpsMethod,
        const QString &wpsPin);

protected:
    /*! For scripts, which have numbers for enumerators. */
    Q_INVOKABLE int requestConnect(
        const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin);

public:
    /*!
     * Gives up what is being connected; a WiFiDirectResult::Type:
     * - Success: the service took it;
     * - NoRequestToCancel: the service answers with the error 22;
     * - InternalError: with another error, or the exchange failed.
     */
    Q_INVOKABLE int cancelConnectRequest();
    /*! Asks the service for the IP address of a peer; empty where it gives none, for whatever reason. */
    [[nodiscard]] Q_INVOKABLE QString ipAddress(const QString &hardwareAddress);
    /*! True if the service is there and supports Wi-Fi Direct. Reads the service's object at each call. */
    [[nodiscard]] Q_INVOKABLE static bool isSupported();

    /*! The hardware addresses of the peers in sight, in the order of their appearance. */
    [[nodiscard]] Q_INVOKABLE QStringList visibleDevices() const;
    /*! The hardware addresses of the peers that are connected, in the order of their appearance. */
    [[nodiscard]] Q_INVOKABLE QStringList connectedDevices() const;
    /*! The name of a peer in sight or else connected; empty for any other. */
    [[nodiscard]] Q_INVOKABLE QString name(const QString &hardwareAddress) const;
    /*! The WiFiDirectDeviceType::Type of a peer in sight; Unknown for any other. */
    [[nodiscard]] Q_INVOKABLE int deviceType(const QString &hardwareAddress) const;

Q_SIGNALS:
    /*! A session was opened; requestStopSession() takes its key. */
    void sessionStarted(QString session);
    /*! A session was closed by requestStopSession(). */
    void sessionStopped();
    /*!
     * A peer has come into sight. This signal itself sets off deviceFound: a receiver of both hears
     * deviceFound first, and where the application ends all connections of this object with disconnect(), or
     * blocks its signals, deviceFound comes no more.
     */
    Q_REVISION(1)
    void deviceDiscovered(QString name, QString hardwareAddress, oz::device::WiFiDirectDeviceType::Type type,
        oz::device::WiFiDirectSecondaryDeviceType::Types secondaryTypes,
        oz::device::WiFiDirectRole::Type role);
    /*! A peer has come into sight; set off by deviceDiscovered. */
    void deviceFound(QString name, QString hardwareAddress, oz::device::WiFiDirectDeviceType::Type type);
    /*! A peer is out of sight. */
    void deviceLost(QString hardwareAddress);
    /*! A peer is connected; \a intent is its part in the group, Any where that is not known. */
    void deviceConnected(QString name, QString hardwareAddress, oz::device::WiFiDirectDeviceType::Type type,
        QString ipAddress, oz::device::WiFiDirectIntent::Type intent);
    /*! A peer that was connected is so no more, or the service says nothing of it any more. */
    void deviceDisconnected(QString hardwareAddress);
    //!@{
    /*!
     * The property of this name has changed. A reading announces scanningChanged (and scanCompleted),
     * enabledChanged, lastUpdateChanged, connectionStateChanged, networkInterfaceNameChanged,
     * networkRoleChanged, networkSsidChanged, networkOwnerHardwareAddressChanged,
     * networkOwnerIpAddressChanged and networkPasswordChanged in this order, and then what became of the
     * peers.
     */
    void scanningChanged(bool scanning);
    void enabledChanged(bool enabled);
    void lastUpdateChanged(QDateTime lastUpdate);
    void connectionStateChanged(oz::device::WiFiDirectConnectionState::Type connectionState);
    void networkRoleChanged(oz::device::WiFiDirectRole::Type networkRole);
    void networkInterfaceNameChanged(QString networkInterfaceName);
    void networkSsidChanged(QString networkSsid);
    void networkOwnerHardwareAddressChanged(QString networkHardwareAddress);
    void networkOwnerIpAddressChanged(QString networkIpAddress);
    void networkPasswordChanged(QString networkPassword);
    //!@}
    /*! A scan has ended. */
    void scanCompleted();
    /*! Never emitted. */
    void stateChanged(int state);

    //!@{
    /*! Follows its namesake at once, with the enumerations as numbers. */
    void deviceFound(QString name, QString hardwareAddress, int type);
    Q_REVISION(1)
    void deviceDiscovered(QString name, QString hardwareAddress, int type, int secondaryTypes, int role);
    void deviceConnected(QString name, QString hardwareAddress, int type, QString ipAddress, int intent);
    void connectionStateChanged(int networkState);
    void networkRoleChanged(int networkRole);
    //!@}

private:
    WiFiDirectPrivate *d;
};

} // namespace oz::device
