#include "linux/UdevDevices.hpp"

#include <libudev.h>

#include <memory>

namespace oz::services {

namespace {

struct Unref
{
    void operator()(udev *context) const { udev_unref(context); }
    void operator()(udev_enumerate *list) const { udev_enumerate_unref(list); }
    void operator()(udev_device *device) const { udev_device_unref(device); }
};

template <typename Type>
using Owned = std::unique_ptr<Type, Unref>;

} // namespace

QList<UdevDevice> udevDevices(const QString &subsystem)
{
    const Owned<udev> context(udev_new());
    const Owned<udev_enumerate> list(context ? udev_enumerate_new(context.get()) : nullptr);
    if (!list)
        return {};
    udev_enumerate_add_match_subsystem(list.get(), subsystem.toLatin1().constData());
    udev_enumerate_scan_devices(list.get());
    QList<UdevDevice> devices;
    udev_list_entry *entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get()))
    {
        const char *path = udev_list_entry_get_name(entry);
        const Owned<udev_device> device(udev_device_new_from_syspath(context.get(), path));
        if (!device)
            continue; // it is gone by now
        UdevDevice &found = devices.emplaceBack();
        found.path = QString::fromLocal8Bit(path);
        udev_list_entry *property = nullptr;
        udev_list_entry_foreach(property, udev_device_get_properties_list_entry(device.get()))
        {
            found.properties.insert(QString::fromLatin1(udev_list_entry_get_name(property)),
                QString::fromUtf8(udev_list_entry_get_value(property)));
        }
    }
    return devices;
}

} // namespace oz::services
