#include <oz/DeviceRoot.hpp>

#include <QDir>
#include <QFile>

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace oz {

namespace {

QString absolute(const char *directory)
{
    QString path = QDir::cleanPath(QDir::current().absoluteFilePath(QFile::decodeName(directory)));
    return path == QLatin1String("/") ? QString() : path;
}

} // namespace

QString deviceRoot()
{
    if (const char *root = ::secure_getenv("OZ_DEVICE_ROOT"); root && *root)
        return absolute(root);
    struct stat status;
    if (::stat("/pps", &status) == 0 && S_ISDIR(status.st_mode))
        return {};
    const char *runtime = ::secure_getenv("XDG_RUNTIME_DIR");
    const QString base =
        runtime && *runtime ? absolute(runtime) : QLatin1String("/run/user/") + QString::number(::geteuid());
    return base + QLatin1String("/ozdevice");
}

QString devicePath(const QString &path)
{
    return deviceRoot() + path;
}

} // namespace oz
