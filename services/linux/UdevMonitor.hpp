#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>

struct udev;
struct udev_monitor;

namespace oz::services {

/*! Tells when a device of a subsystem has come, gone or changed, as udev says it. */
class UdevMonitor
{
public:
    /*! Where there is no udev, it never tells. \a changed is called from the event loop. */
    UdevMonitor(const QString &subsystem, std::function<void()> changed);
    ~UdevMonitor();
    UdevMonitor(const UdevMonitor &) = delete;
    UdevMonitor &operator=(const UdevMonitor &) = delete;

private:
    udev *m_udev;
    udev_monitor *m_monitor;
    std::unique_ptr<QSocketNotifier> m_readable;
};

} // namespace oz::services
