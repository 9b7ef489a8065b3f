#pragma once

#include <oz/device/DeviceOrientation.hpp>
#include <oz/device/OzDeviceGlobal.hpp>
#include <oz/device/UserActivityState.hpp>

#include <QObject>

namespace oz::device {

class DeviceInfoPrivate;

/*!
 * The device's orientation in space, and whether somebody uses it.
 *
 * The activity is there from construction on. The orientation comes from the event loop, once the sensor has
 * given its first reading; an object that is made in a thread without an event loop starts the sensor at the
 * first call of orientation() in one. Where nothing publishes the orientation there is no reading, and the
 * first one comes when something does.
 *
 * Where the power manager's device cannot be opened at construction, the activity stays Unknown for the life
 * of this object. Where the power manager goes away later for longer than oz::graceTime(), the activity
 * becomes Unknown, until it is back.
 *
 * Source: the object "/pps/services/sensors/orientation", by way of Qt Sensors and a plugin of this library,
 * and no other sensor; the status "user_activity" of the device "/dev/power/mgr".
 *
 * Use an instance on the thread that created it, where all signals come, and do not move it to another.
 * Failures are logged as warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT DeviceInfo : public QObject
{
    Q_OBJECT
    /*! The last orientation that the sensor was sure of; TopUp before the first. */
    Q_PROPERTY(
        oz::device::DeviceOrientation::Type orientation READ orientation NOTIFY orientationChanged FINAL)
    /*! Active or Inactive; Unknown where the power manager does not say. */
    Q_PROPERTY(oz::device::UserActivityState::Type activityState READ activityState NOTIFY
            activityStateChanged REVISION 1 FINAL)
    /*! True if the sensor is sure of the orientation now; false before its first reading. */
    Q_PROPERTY(bool orientationValid READ isOrientationValid NOTIFY orientationValidChanged REVISION 2 FINAL)

public:
    /*! Belongs to \a parent. */
    explicit DeviceInfo(QObject *parent = nullptr);
    ~DeviceInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] DeviceOrientation::Type orientation() const;
    [[nodiscard]] UserActivityState::Type activityState() const;
    [[nodiscard]] bool isOrientationValid() const;
    //!@}

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. A reading of the sensor announces the orientation before its
     * validity.
     */
    void orientationChanged(oz::device::DeviceOrientation::Type orientation);
    Q_REVISION(1) void activityStateChanged(oz::device::UserActivityState::Type activityState);
    Q_REVISION(2) void orientationValidChanged(bool isValid);
    //!@}

    /*! Follows each orientationChanged(DeviceOrientation::Type) with the same value as a number. */
    void orientationChanged(int orientation);
    /*! Follows each activityStateChanged(UserActivityState::Type) with the same value as a number. */
    Q_REVISION(1) void activityStateChanged(int activityState);

private:
    friend class DeviceInfoPrivate;
    DeviceInfoPrivate *d;
};

} // namespace oz::device
