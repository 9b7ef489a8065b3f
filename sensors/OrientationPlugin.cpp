// Feeds Qt's orientation sensor from the tree if a device publishes its orientation there. Otherwise Qt tries
// its other backends, except for sensors with the TreeOnlyProperty.

#include "OrientationBackend.hpp"
#include "TreeBackend.hpp"

#include <QOrientationSensor>
#include <QSensorManager>
#include <QSensorPluginInterface>

namespace oz::sensors {

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
        // It also precedes the backends of real sensors, which a computer that simulates a device may have.
        // Qt asks those if createBackend() returns null.
        QSensorManager::setDefaultBackend(QOrientationSensor::sensorType, OrientationIdentifier);
    }

    QSensorBackend *createBackend(QSensor *sensor) override
    {
        const bool wanted = sensor->property(TreeOnlyProperty).toBool() || isOrientationPublished();
        return wanted ? new OrientationBackend(sensor) : nullptr;
    }
};

} // namespace oz::sensors

#include "OrientationPlugin.moc"
