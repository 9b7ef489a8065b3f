#pragma once

#include <QList>
#include <QMap>
#include <QString>

namespace oz::services {

/*! A device of the kernel's, with what udev has found out about it. */
struct UdevDevice
{
    QString path; //!< its folder in /sys
    QMap<QString, QString> properties;
};

/*! The devices of a \a subsystem ("input"). It may take its time. */
[[nodiscard]] QList<UdevDevice> udevDevices(const QString &subsystem);

} // namespace oz::services
