#pragma once

#include "ChangeTable.hpp"

#include <oz/EventDelivery.hpp>
#include <oz/device/DeviceInfo.hpp>

#include <atomic>

class QOrientationSensor;

namespace oz::device {

struct PowmanStatus;

class DeviceInfoPrivate : public QObject
{
    Q_OBJECT

public:
    /*! The last reading of the sensor. */
    struct Orientation
    {
        DeviceOrientation::Type value = DeviceOrientation::TopUp;
        bool valid = false;
    };

    explicit DeviceInfoPrivate(DeviceInfo *q);
    ~DeviceInfoPrivate() override;

    [[nodiscard]] static DeviceInfoPrivate *toPrivate(DeviceInfo *info);

    void tryStartOrientationSensor() const;
    [[nodiscard]] DeviceOrientation::Type orientation() const;
    [[nodiscard]] UserActivityState::Type activityState() const { return m_activityState; }
    [[nodiscard]] bool isOrientationValid() const { return m_orientation->valid; }

Q_SIGNALS:
    void activityStateChanged(oz::device::UserActivityState::Type activityState);
    void activityStateChanged(int activityState);

private Q_SLOTS:
    void orientationChanged();

private:
    [[nodiscard]] UserActivityState::Type readActivityState() const;
    void updateActivityState();
    void scheduleSigeventHandler();
    static int hubSigeventHandler(void *data);
    void watchActivity();

    DeviceInfo *q;
    QOrientationSensor *m_sensor;
    Announced<Orientation> m_orientation;
    PowmanStatus *m_status = nullptr;
    // The event service's thread may write it while the getter reads.
    std::atomic<UserActivityState::Type> m_activityState = UserActivityState::Unknown;
    sigevent m_event;
    bool m_hubInitialized = false;
    bool m_handlerRegistered = false;
};

} // namespace oz::device
