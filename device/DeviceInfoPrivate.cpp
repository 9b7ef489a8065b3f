#include "DeviceInfoPrivate.hpp"

#include "Log.hpp"
#include "OrientationSensor.hpp"
#include "powman/PowmanStatus.hpp"

#include <oz/EventService.hpp>

#include <QAbstractEventDispatcher>
#include <QOrientationSensor>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

namespace oz::device {

namespace {

constexpr const char *ActivityStatus = "user_activity";
constexpr std::size_t MaxValueSize = 256;

// By what a status begins with.
constexpr struct
{
    std::string_view prefix;
    UserActivityState::Type state;
} ActivityStates[] = {
    {"active", UserActivityState::Active},
    {"standby", UserActivityState::Inactive},
};

using Orientation = DeviceInfoPrivate::Orientation;

using Changes = ChangeTable<
    Change<Fields<&Orientation::value>, qOverload<DeviceOrientation::Type>(&DeviceInfo::orientationChanged),
        qOverload<int>(&DeviceInfo::orientationChanged)>,
    Change<Fields<&Orientation::valid>, &DeviceInfo::orientationValidChanged>>;

std::optional<DeviceOrientation::Type> orientationOf(QOrientationReading::Orientation reading)
{
    switch (reading) {
    case QOrientationReading::TopUp:
        return DeviceOrientation::TopUp;
    case QOrientationReading::TopDown:
        return DeviceOrientation::BottomUp;
    case QOrientationReading::LeftUp:
        return DeviceOrientation::LeftUp;
    case QOrientationReading::RightUp:
        return DeviceOrientation::RightUp;
    case QOrientationReading::FaceUp:
        return DeviceOrientation::FaceUp;
    case QOrientationReading::FaceDown:
        return DeviceOrientation::FaceDown;
    default:
        return std::nullopt;
    }
}

void warn(const char *text, int error)
{
    qCWarning(logDevice) << text << std::strerror(error);
}

} // namespace

DeviceInfoPrivate::DeviceInfoPrivate(DeviceInfo *publicObject)
    : QObject(publicObject), q(publicObject), m_sensor(makeOrientationSensor(this))
{
    // These values cross a queued connection.
    qRegisterMetaType<UserActivityState::Type>("oz::device::UserActivityState::Type");
    tryStartOrientationSensor();
    watchActivity();
}

DeviceInfoPrivate::~DeviceInfoPrivate()
{
    if (m_handlerRegistered)
        hub_remove_sigevent_handler(&m_event);
    if (m_hubInitialized)
        hub_shutdown();
    if (!m_status)
        return;
    if (const int error = powman_status_destroy(m_status))
        warn("DeviceInfo: Failed to destroy powman status", error);
}

DeviceInfoPrivate *DeviceInfoPrivate::toPrivate(DeviceInfo *info)
{
    return info->d;
}

void DeviceInfoPrivate::watchActivity()
{
    m_status = powman_status_create(ActivityStatus);
    if (!m_status) {
        qCWarning(logDevice) << "DeviceInfo: Initialization failed";
        return;
    }
    m_activityState = readActivityState();
    m_event = {};
    if (hub_initialize() < 0) {
        warn("DeviceInfo: Failed to initialize HUB -", errno);
        return;
    }
    m_hubInitialized = true;
    if (hub_add_sigevent_handler(&m_event, &DeviceInfoPrivate::hubSigeventHandler, this) < 0) {
        warn("DeviceInfo: Failed to register HUB sigevent handler -", errno);
        return;
    }
    m_handlerRegistered = true;
    scheduleSigeventHandler();
    connect(this, qOverload<UserActivityState::Type>(&DeviceInfoPrivate::activityStateChanged), q,
        qOverload<UserActivityState::Type>(&DeviceInfo::activityStateChanged), Qt::QueuedConnection);
    connect(this, qOverload<int>(&DeviceInfoPrivate::activityStateChanged), q,
        qOverload<int>(&DeviceInfo::activityStateChanged), Qt::QueuedConnection);
}

void DeviceInfoPrivate::tryStartOrientationSensor() const
{
    if (!QAbstractEventDispatcher::instance()) {
        qCWarning(logDevice)
            << "DeviceInfo: Tried to start orientation sensor while no event loop is present";
        return;
    }
    if (!m_sensor->start()) {
        qCWarning(logDevice) << "DeviceInfo: Orientation sensor failed to start" << m_sensor->error();
        return;
    }
    connect(m_sensor, &QSensor::readingChanged, this, &DeviceInfoPrivate::orientationChanged,
        Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
}

DeviceOrientation::Type DeviceInfoPrivate::orientation() const
{
    if (!m_sensor->isActive())
        tryStartOrientationSensor();
    return m_orientation->value;
}

void DeviceInfoPrivate::orientationChanged()
{
    const auto orientation = orientationOf(m_sensor->reading()->orientation());
    if (!orientation)
        qCWarning(logDevice) << "DeviceInfo: Invalid orientation received from the sensor reading";
    // The last orientation that the sensor was sure of stays.
    Changes::storeAndEmit(
        q, &m_orientation, {orientation.value_or(m_orientation->value), orientation.has_value()});
}

UserActivityState::Type DeviceInfoPrivate::readActivityState() const
{
    if (!m_status)
        return UserActivityState::Unknown;
    char text[MaxValueSize] = "";
    const int length = powman_status_value(m_status, sizeof text, text);
    if (length < 0) {
        warn("DeviceInfo: Failed to obtain status", -length);
        return UserActivityState::Unknown;
    }
    if (std::size_t(length) >= sizeof text)
        text[sizeof text - 1] = '\0';
    for (const auto &known : ActivityStates) {
        if (std::string_view(text).starts_with(known.prefix))
            return known.state;
    }
    qCWarning(logDevice) << "DeviceInfo: Unrecognized status value" << text;
    return UserActivityState::Unknown;
}

void DeviceInfoPrivate::updateActivityState()
{
    const UserActivityState::Type state = readActivityState();
    if (state == m_activityState)
        return;
    m_activityState = state;
    Q_EMIT activityStateChanged(state);
    Q_EMIT activityStateChanged(int(state));
}

void DeviceInfoPrivate::scheduleSigeventHandler()
{
    if (const int error = powman_status_notify(m_status, &m_event))
        warn("DeviceInfo: Failed to schedule SIGEVENT handler", error);
}

int DeviceInfoPrivate::hubSigeventHandler(void *data)
{
    auto *self = static_cast<DeviceInfoPrivate *>(data);
    self->updateActivityState();
    self->scheduleSigeventHandler();
    return 0;
}

} // namespace oz::device
