#include "OrientationSensor.hpp"

#include "../sensors/TreeBackend.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QOrientationSensor>
#include <QPluginLoader>
#include <QSensorPluginInterface>

#include <dlfcn.h>

namespace oz::device {

namespace {

// The folder of this library, in a build tree as when installed anywhere.
QDir ownFolder()
{
    Dl_info place{};
    if (!::dladdr(reinterpret_cast<const void *>(&makeOrientationSensor), &place) || !place.dli_fname)
        return {};
    return QFileInfo(QFileInfo(QFile::decodeName(place.dli_fname)).canonicalFilePath()).dir();
}

// Registers the backend, unless another copy of the plugin has done so before.
bool loadPlugin()
{
    for (const char *folder : {OZ_PLUGINS_FROM_LIBRARY, "qt6/plugins"}) {
        QPluginLoader loader(
            ownFolder().filePath(QLatin1String(folder) + QLatin1String("/sensors/libozdevice_sensors.so")));
        if (auto *plugin = qobject_cast<QSensorPluginInterface *>(loader.instance())) {
            plugin->registerSensors();
            return true;
        }
    }
    return false;
}

} // namespace

QOrientationSensor *makeOrientationSensor(QObject *parent)
{
    [[maybe_unused]] static const bool s_loaded = loadPlugin();
    auto *sensor = new QOrientationSensor(parent);
    sensor->setIdentifier(sensors::OrientationIdentifier);
    sensor->setProperty(sensors::TreeOnlyProperty, true);
    return sensor;
}

} // namespace oz::device
