#pragma once

#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/CellularConnectionState.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QString>
#include <QStringList>

namespace oz::device {

class CellularDataInterfacePrivate;

/*!
 * One cellular data profile, such as that of the internet connection: its state, and requests to connect and
 * disconnect it. Without a name it stands for no profile.
 *
 * The values are there once a name is set and change from the event loop. Each reading stands for itself:
 * what it lacks is false, empty or Disconnected, and so is everything after a reading that fails, and where
 * the service's object cannot be opened when the name is set.
 *
 * Source: the attribute of the profile's name of the object "/pps/services/cds/cnice/status". Requests go to
 * the object of the profile's name with "_control" behind it, in the same directory.
 *
 * Use an instance on the thread that created it, and do not move it to another. Requests, and with them
 * setName() and the destructor while a connection is requested, block that thread until the service answers
 * or goes away, for oz::waitLimit() (60 s) at most: the result is InternalError then. Failures are logged as
 * warnings of the category "oz.device", but for a control object that does not open.
 */
class OZ_DEVICE_EXPORT CellularDataInterface : public QObject
{
    Q_OBJECT
    /*! The profile's name; empty for none. */
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    /*! True if the profile is there and enabled; false also for unknown. */
    Q_PROPERTY(bool valid READ isValid NOTIFY validChanged FINAL)
    /*! True if the profile is connected without being asked; false also for unknown. */
    Q_PROPERTY(bool alwaysOn READ isAlwaysOn NOTIFY alwaysOnChanged FINAL)
    /*! True if only certain applications may use the profile; false also for unknown. */
    Q_PROPERTY(bool accessControlled READ isAccessControlled NOTIFY accessControlledChanged FINAL)
    /*! The network interface of the connection, such as "rmnet0"; empty where there is none. */
    Q_PROPERTY(
        QString networkInterfaceName READ networkInterfaceName NOTIFY networkInterfaceNameChanged FINAL)
    /*! The access point of the profile; empty for unknown. */
    Q_PROPERTY(QString accessPointName READ accessPointName NOTIFY accessPointNameChanged FINAL)
    /*! As the service publishes it; requests do not change it by themselves. Disconnected also for unknown.
     */
    Q_PROPERTY(oz::device::CellularConnectionState::Type connectionState READ connectionState NOTIFY
            connectionStateChanged FINAL)

public:
    /*! No profile. */
    explicit CellularDataInterface(QObject *parent = nullptr);
    /*! The profile called \a name. */
    explicit CellularDataInterface(const QString &name, QObject *parent = nullptr);
    /*! Disconnects what this object had connected. */
    ~CellularDataInterface() override;

    /*! The getter of the property. */
    [[nodiscard]] QString name() const;
    /*!
     * Turns to another profile, after disconnecting what this object had connected. What differs there is
     * announced first, nameChanged last.
     */
    void setName(const QString &name);
    //!@{
    /*! The getter of the property. */
    [[nodiscard]] bool isValid() const;
    [[nodiscard]] bool isAlwaysOn() const;
    [[nodiscard]] bool isAccessControlled() const;
    [[nodiscard]] QString networkInterfaceName() const;
    [[nodiscard]] QString accessPointName() const;
    [[nodiscard]] CellularConnectionState::Type connectionState() const;
    //!@}

    /*! The names of the profiles that exist now, sorted; empty also where they cannot be read. */
    [[nodiscard]] Q_INVOKABLE QStringList allNames() const;

public Q_SLOTS:
    /*!
     * Asks the service to connect the profile; a CellularConnectionRequestResult::Type:
     * - Requested: the service took it; connectionState tells how it goes on;
     * - NotPossible: this object has a connection requested already (nothing is sent), or the service answers
     *   with the error 13;
     * - InvalidInterface: no name is set, or the profile's control object does not open, for whatever reason
     * but permission: there is none, its service is gone or has too many clients, no descriptor is left;
     * - PermissionDenied: the process may not open the control object;
     * - InternalError: the exchange failed, or the service answers with another error.
     */
    int requestConnect();
    /*!
     * Asks the service to end the connection that this object requested; a
     * CellularConnectionRequestResult::Type. Whatever the result, the object has no connection afterwards:
     * - Requested: the service took it;
     * - NotPossible: this object has requested no connection (nothing is sent);
     * - InvalidInterface, PermissionDenied: as for requestConnect();
     * - InternalError: the exchange failed, or the service answers with an error.
     */
    int requestDisconnect();

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. A reading announces validChanged, alwaysOnChanged,
     * accessControlledChanged, connectionStateChanged, networkInterfaceNameChanged and accessPointNameChanged
     * in this order; nameChanged comes last.
     */
    void nameChanged(QString name);
    void validChanged(bool valid);
    void alwaysOnChanged(bool alwaysOn);
    void accessControlledChanged(bool accessControlled);
    void networkInterfaceNameChanged(QString networkInterfaceName);
    void accessPointNameChanged(QString accessPointName);
    void connectionStateChanged(oz::device::CellularConnectionState::Type connectionState);
    //!@}

    /*! Follows each connectionStateChanged(CellularConnectionState::Type) with the same value as a number. */
    void connectionStateChanged(int connectionState);

private:
    CellularDataInterfacePrivate *d;
};

} // namespace oz::device
