#include "OrientationBackend.hpp"

#include <cerrno>
#include <chrono>
#include <utility>

namespace oz::sensors {

namespace {

const QString PpsPath = QStringLiteral("/pps/services/sensors/orientation");
// Every reader of the orientation holds this open; some devices measure only then.
const QString ReadersPath = QStringLiteral("/pps/services/sensors/orientation-readers");

constexpr std::pair<const char *, QOrientationReading::Orientation> Orientations[] = {
    {"top-up", QOrientationReading::TopUp},
    {"bottom-up", QOrientationReading::TopDown},
    {"left-up", QOrientationReading::LeftUp},
    {"right-up", QOrientationReading::RightUp},
    {"face-up", QOrientationReading::FaceUp},
    {"face-down", QOrientationReading::FaceDown},
};

// Not every publisher serves this object, and a daemon that was away may be back, so each reading tries
// again.
std::shared_ptr<PpsObject> openReaders()
{
    thread_local std::weak_ptr<PpsObject> t_readers; // one for all sensors of a thread
    std::shared_ptr<PpsObject> readers = t_readers.lock();
    if (!readers)
        t_readers = readers = std::make_shared<PpsObject>(ReadersPath);
    if (!readers->isOpen())
        readers->open(PpsOpenMode::Publish);
    return readers;
}

QOrientationReading::Orientation orientationOf(const QString &text)
{
    for (const auto &[name, orientation] : Orientations) {
        if (text == QLatin1String(name))
            return orientation;
    }
    return QOrientationReading::Undefined;
}

} // namespace

bool isOrientationPublished()
{
    return PpsObject(PpsPath).open(PpsOpenMode::Subscribe);
}

OrientationBackend::OrientationBackend(QSensor *sensor) : QSensorBackend(sensor), m_pps(PpsPath)
{
    setReading<QOrientationReading>(&m_reading);
    addDataRate(0, 0); // a reading comes with each change
    connect(&m_pps, &PpsObject::readyRead, this, &OrientationBackend::read);
}

void OrientationBackend::start()
{
    if (openOrWait())
        return;
    sensorError(m_pps.error());
    sensorStopped();
}

void OrientationBackend::stop()
{
    m_watcher.reset();
    m_pps.close();
    m_readers.reset();
    m_isKnown = false;
}

bool OrientationBackend::openOrWait()
{
    if (m_pps.open(PpsOpenMode::Subscribe)) {
        m_watcher.reset();
        m_readers = openReaders();
        return true;
    }
    if (m_pps.error() != ENOENT && m_pps.error() != ENOTDIR)
        return false;
    if (m_watcher)
        return true;
    m_watcher = std::make_unique<DevicePathWatcher>(PpsPath);
    // Queued, because start() deletes the watcher if it succeeds.
    connect(
        m_watcher.get(), &DevicePathWatcher::changed, this,
        [this] {
            if (m_watcher)
                start();
        },
        Qt::QueuedConnection);
    return openOrWait(); // the object may have appeared before the watcher watched
}

void OrientationBackend::read()
{
    m_readers = openReaders();
    bool ok = false;
    const QByteArray text = m_pps.read(&ok);
    const QVariantMap message = ok ? PpsObject::decode(text) : QVariantMap();
    if (message.isEmpty())
        return; // removed or malformed: the last reading stays valid
    const QVariant orientation = message.first().toMap().value(QStringLiteral("orientation"));
    m_isKnown = m_isKnown || orientation.isValid();
    if (!m_isKnown)
        return;
    m_reading.setOrientation(orientationOf(orientation.toString()));
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    m_reading.setTimestamp(quint64(std::chrono::duration_cast<std::chrono::microseconds>(now).count()));
    newReadingAvailable();
}

} // namespace oz::sensors
