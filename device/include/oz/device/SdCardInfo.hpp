#pragma once

#include <oz/device/OzDeviceGlobal.hpp>
#include <oz/device/SdCardActivity.hpp>
#include <oz/device/SdCardState.hpp>

#include <QObject>

namespace oz::device {

class SdCardInfoPrivate;

/*!
 * The removable SD card: whether it is mounted, and whether it is busy.
 *
 * The values are there from construction on and change from the event loop. A reading that fails later leaves
 * them as they were. Where the card's object cannot be opened at construction, they stay Unknown for the life
 * of this object.
 *
 * Source: the attributes "mounted" and "busy" of the object "/pps/system/filesystem/removable/sdcard".
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT SdCardInfo : public QObject
{
    Q_OBJECT
    /*! Mounted or Unmounted; Unknown before the first successful reading. */
    Q_PROPERTY(oz::device::SdCardState::Type state READ state NOTIFY stateChanged FINAL)
    /*! Idle or Busy; Unknown before the first successful reading. */
    Q_PROPERTY(oz::device::SdCardActivity::Type activity READ activity NOTIFY activityChanged FINAL)

public:
    /*! Belongs to \a parent. */
    explicit SdCardInfo(QObject *parent = nullptr);
    ~SdCardInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] SdCardState::Type state() const;
    [[nodiscard]] SdCardActivity::Type activity() const;
    //!@}

Q_SIGNALS:
    //!@{
    /*! The property of this name has changed. A reading announces the state before the activity. */
    void stateChanged(oz::device::SdCardState::Type newState);
    void activityChanged(oz::device::SdCardActivity::Type newActivity);
    //!@}

    /*! Follows each stateChanged(SdCardState::Type) with the same value as a number. */
    void stateChanged(int newState);
    /*! Follows each activityChanged(SdCardActivity::Type) with the same value as a number. */
    void activityChanged(int newActivity);

private:
    SdCardInfoPrivate *d;
};

} // namespace oz::device
