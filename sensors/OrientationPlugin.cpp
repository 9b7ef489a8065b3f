// Feeds Qt's orientation sensor from the tree, where a device publishes its orientation there. Everywhere
// else Qt goes on to its other backends.

#include <oz/PpsObject.hpp>

#include <QOrientationSensor>
#include <QSensorBackend>
#include <QSensorManager>
#include <QSensorPluginInterface>

#include <chrono>
#include <utility>

namespace oz::sensors {

namespace {

const QString PpsPath = QStringLiteral("/pps/services/sensors/orientation");
constexpr const char *Identifier = "ozdevice.orientation";

constexpr std::pair<const char *, QOrientationReading::Orientation> Orientations[] = {
    {"top-up", QOrientationReading::TopUp},
    {"bottom-up", QOrientationReading::TopDown},
    {"left-up", QOrientationReading::LeftUp},
    {"right-up", QOrientationReading::RightUp},
    {"face-up", QOrientationReading::FaceUp},
    {"face-down", QOrientationReading::FaceDown},
};

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
        if (!m_pps.open(PpsOpenMode::Subscribe)) {
            sensorError(m_pps.error());
            sensorStopped();
        }
    }

    void stop() override { m_pps.close(); }

private:
    void read()
    {
        bool ok = false;
        const QByteArray text = m_pps.read(&ok);
        const QVariantMap message = ok ? PpsObject::decode(text) : QVariantMap();
        if (message.isEmpty())
            return; // the object is gone, or malformed; what it told last holds
        m_reading.setOrientation(
            orientationOf(message.first().toMap().value(QStringLiteral("orientation")).toString()));
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        m_reading.setTimestamp(quint64(std::chrono::duration_cast<std::chrono::microseconds>(now).count()));
        newReadingAvailable();
    }

    PpsObject m_pps;
    QOrientationReading m_reading;
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
        if (!QSensorManager::isBackendRegistered(QOrientationSensor::sensorType, Identifier))
            QSensorManager::registerBackend(QOrientationSensor::sensorType, Identifier, this);
        // Before the backends of real sensors too, which a computer that simulates a device may have.
        if (hasOrientation())
            QSensorManager::setDefaultBackend(QOrientationSensor::sensorType, Identifier);
    }

    QSensorBackend *createBackend(QSensor *sensor) override
    {
        return hasOrientation() ? new OrientationBackend(sensor) : nullptr;
    }

private:
    static bool hasOrientation() { return PpsObject(PpsPath).open(PpsOpenMode::Subscribe); }
};

} // namespace oz::sensors

#include "OrientationPlugin.moc"
