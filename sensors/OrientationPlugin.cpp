// Feeds Qt's orientation sensor from the tree, where a device publishes its orientation there. Everywhere
// else Qt goes on to its other backends, but for those who want none of these.

#include "OrientationSource.hpp"

#include <oz/DevicePathWatcher.hpp>
#include <oz/PpsObject.hpp>

#include <QOrientationSensor>
#include <QSensorBackend>
#include <QSensorManager>
#include <QSensorPluginInterface>

#include <cerrno>
#include <chrono>
#include <memory>
#include <utility>

namespace oz::sensors {

namespace {

const QString PpsPath = QStringLiteral("/pps/services/sensors/orientation");
// Held open by whoever reads the orientation: some devices measure it only then.
const QString ReadersPath = QStringLiteral("/pps/services/sensors/orientation-readers");

constexpr std::pair<const char *, QOrientationReading::Orientation> Orientations[] = {
    {"top-up", QOrientationReading::TopUp},
    {"bottom-up", QOrientationReading::TopDown},
    {"left-up", QOrientationReading::LeftUp},
    {"right-up", QOrientationReading::RightUp},
    {"face-up", QOrientationReading::FaceUp},
    {"face-down", QOrientationReading::FaceDown},
};

// A publisher of the device's own may do without the object; a daemon that was away may be there now.
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

// Every other text is an orientation that nobody can tell.
QOrientationReading::Orientation orientationOf(const QString &text)
{
    for (const auto &[name, orientation] : Orientations) {
        if (text == QLatin1String(name))
            return orientation;
    }
    return QOrientationReading::Undefined;
}

class OrientationBackend final : public QSensorBackend
{
    Q_OBJECT

public:
    explicit OrientationBackend(QSensor *sensor) : QSensorBackend(sensor), m_pps(PpsPath)
    {
        setReading<QOrientationReading>(&m_reading);
        addDataRate(0, 0); // a reading comes with each change
        connect(&m_pps, &PpsObject::readyRead, this, &OrientationBackend::read);
    }

    // The first reading comes from the event loop, as every other.
    void start() override
    {
        if (openOrWait())
            return;
        sensorError(m_pps.error());
        sensorStopped();
    }

    void stop() override
    {
        m_watcher.reset();
        m_pps.close();
        m_readers.reset();
        m_isKnown = false;
    }

private:
    // False where neither works out.
    bool openOrWait()
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
        // The watcher ends where this succeeds.
        connect(
            m_watcher.get(), &DevicePathWatcher::changed, this,
            [this] {
                if (m_watcher)
                    start();
            },
            Qt::QueuedConnection);
        return openOrWait(); // it may have come in between
    }

    void read()
    {
        m_readers = openReaders();
        bool ok = false;
        const QByteArray text = m_pps.read(&ok);
        const QVariantMap message = ok ? PpsObject::decode(text) : QVariantMap();
        if (message.isEmpty())
            return; // the object is gone, or malformed; what it told last holds
        const QVariant orientation = message.first().toMap().value(QStringLiteral("orientation"));
        m_isKnown = m_isKnown || orientation.isValid();
        if (!m_isKnown)
            return; // nothing has told it yet
        m_reading.setOrientation(orientationOf(orientation.toString()));
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        m_reading.setTimestamp(quint64(std::chrono::duration_cast<std::chrono::microseconds>(now).count()));
        newReadingAvailable();
    }

    PpsObject m_pps;
    std::shared_ptr<PpsObject> m_readers; // while this reads
    std::unique_ptr<DevicePathWatcher> m_watcher; // while the object is not there
    QOrientationReading m_reading;
    bool m_isKnown = false; // there was one
};

} // namespace

class OrientationPlugin final : public QObject, public QSensorPluginInterface, public QSensorBackendFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.qt-project.Qt.QSensorPluginInterface/1.0" FILE "plugin.json")
    Q_INTERFACES(QSensorPluginInterface)

public:
    void registerSensors() override
    {
        if (!QSensorManager::isBackendRegistered(QOrientationSensor::sensorType, OrientationIdentifier))
            QSensorManager::registerBackend(QOrientationSensor::sensorType, OrientationIdentifier, this);
        // Before the backends of real sensors too, which a computer that simulates a device may have. Where
        // it makes no backend, these have their turn.
        QSensorManager::setDefaultBackend(QOrientationSensor::sensorType, OrientationIdentifier);
    }

    QSensorBackend *createBackend(QSensor *sensor) override
    {
        const bool wanted = sensor->property(TreeOnlyProperty).toBool() || hasOrientation();
        return wanted ? new OrientationBackend(sensor) : nullptr;
    }

private:
    static bool hasOrientation() { return PpsObject(PpsPath).open(PpsOpenMode::Subscribe); }
};

} // namespace oz::sensors

#include "OrientationPlugin.moc"
