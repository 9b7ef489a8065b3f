#pragma once

#include <QMap>
#include <QObject>
#include <QStringList>

#include <memory>

struct udev;
struct udev_monitor;

namespace oz::services {

/*! A device of the kernel's, with what udev has found out about it. */
struct UdevDevice
{
    QString path; //!< its folder in /sys
    QMap<QString, QString> properties;
};

/*! The devices of a \a subsystem ("input"). It may take its time. */
[[nodiscard]] QList<UdevDevice> udevDevices(const QString &subsystem);

/*! Tells of the devices of some subsystems: those that come, change or go, once udev has looked at them. */
class UdevMonitor : public QObject
{
    Q_OBJECT

public:
    explicit UdevMonitor(const QStringList &subsystems);
    ~UdevMonitor() override;

Q_SIGNALS:
    void changed();

private:
    struct Release
    {
        void operator()(udev *context) const;
        void operator()(udev_monitor *monitor) const;
    };

    void receive();

    std::unique_ptr<udev, Release> m_udev;
    std::unique_ptr<udev_monitor, Release> m_monitor;
};

} // namespace oz::services
