#include "linux/UdevMonitor.hpp"

#include <libudev.h>

namespace oz::services {

UdevMonitor::UdevMonitor(const QString &subsystem, std::function<void()> changed)
    : m_udev(udev_new()), m_monitor(m_udev ? udev_monitor_new_from_netlink(m_udev, "udev") : nullptr)
{
    if (!m_monitor)
        return;
    udev_monitor_filter_add_match_subsystem_devtype(m_monitor, subsystem.toLatin1().constData(), nullptr);
    if (udev_monitor_enable_receiving(m_monitor) < 0)
        return;
    m_readable = std::make_unique<QSocketNotifier>(udev_monitor_get_fd(m_monitor), QSocketNotifier::Read);
    QObject::connect(m_readable.get(), &QSocketNotifier::activated, m_readable.get(),
        [this, changed = std::move(changed)] {
            while (udev_device *device = udev_monitor_receive_device(m_monitor))
                udev_device_unref(device);
            changed();
        });
}

UdevMonitor::~UdevMonitor()
{
    m_readable.reset();
    udev_monitor_unref(m_monitor);
    udev_unref(m_udev);
}

} // namespace oz::services
