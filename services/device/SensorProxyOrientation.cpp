#include "device/SensorProxyOrientation.hpp"

#include <QDBusArgument>

#include <algorithm>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

// In which a sensor that is asked from time to time has been asked.
constexpr std::chrono::milliseconds LongestMeasurement = 1s;

const QString Path = QStringLiteral("/net/hadess/SensorProxy");
const QString Interface = QStringLiteral("net.hadess.SensorProxy");
const QString OrientationProperty = QStringLiteral("AccelerometerOrientation");

Orientation orientationOf(const QString &text)
{
    if (text == u"normal")
        return Orientation::TopUp;
    if (text == u"bottom-up")
        return Orientation::BottomUp;
    if (text == u"left-up")
        return Orientation::LeftUp;
    return text == u"right-up" ? Orientation::RightUp : Orientation::Undefined;
}

} // namespace

SensorProxyOrientation::SensorProxyOrientation(std::shared_ptr<SystemBus> bus)
    : BusSource(std::make_shared<BusService>(
        std::move(bus), QStringLiteral("net.hadess.SensorProxy"), QStringLiteral("iio-sensor-proxy")))
{
    for (QTimer *timer : {&m_lingering, &m_measuring}) {
        timer->setSingleShot(true);
        timer->callOnTimeout(this, [this] {
            if (objects().isComplete())
                readState();
        });
    }
    m_lingering.setInterval(graceTime());
    m_measuring.setInterval(std::min(LongestMeasurement, graceTime() / 2));
    m_lingering.start(); // whoever read before a restart comes back
    connect(&service(), &BusService::appeared, this, [this] {
        m_isClaimed = false;
        objects().follow(Path, {Interface});
    });
    service().hear(Path, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"), this, [this](const QDBusMessage &message) {
            if (!qdbus_cast<QVariantMap>(message.arguments().value(1)).contains(OrientationProperty))
                return;
            m_measuring.stop();
            if (objects().isComplete())
                readState();
        });
}

void SensorProxyOrientation::setRead(bool isRead)
{
    if (std::exchange(m_isRead, isRead) == isRead)
        return;
    if (isRead)
        m_lingering.stop();
    else
        m_lingering.start();
    if (objects().isComplete())
        readState();
}

void SensorProxyOrientation::readState()
{
    if (!objects().property(Path, Interface, QStringLiteral("HasAccelerometer")).toBool()) {
        m_isClaimed = false;
        setAbsent(QStringLiteral("iio-sensor-proxy knows no accelerometer of this device"));
        return;
    }
    const bool isWanted = m_isRead || m_lingering.isActive();
    if (isWanted != m_isClaimed)
        claim(isWanted);
    if (!isWanted)
        know({});
    else if (!m_measuring.isActive())
        know({orientationOf(objects().property(Path, Interface, OrientationProperty).toString())});
}

void SensorProxyOrientation::claim(bool isWanted)
{
    m_isClaimed = isWanted;
    if (isWanted)
        m_measuring.start();
    const QString method =
        isWanted ? QStringLiteral("ClaimAccelerometer") : QStringLiteral("ReleaseAccelerometer");
    service().call(Path, Interface, method, {}, this, [this, isWanted](const QDBusMessage &answer) {
        if (!isWanted || !m_isClaimed)
            return;
        if (answer.type() == QDBusMessage::ErrorMessage) {
            m_isClaimed = false;
            m_measuring.stop();
            setAbsent(QLatin1String("iio-sensor-proxy does not let the accelerometer be read: ")
                + problemOf(answer));
            return;
        }
        objects().follow(Path, {Interface}); // it may have told before this was one of its readers
    });
}

} // namespace oz::services
