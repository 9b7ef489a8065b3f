#include "devices/DeviceReturn.hpp"

#include <cerrno>
#include <sys/socket.h>

namespace oz {

void DeviceReturn::await(const std::shared_ptr<OpenDevice> &device, QObject *context)
{
    const std::lock_guard lock(OpenDevices::instance().m_mutex);
    if (device->fd < 0 || device->comingBack || device->link.isUp())
        return;
    device->comingBack = new DeviceReturn(device, context);
}

DeviceReturn::DeviceReturn(const std::shared_ptr<OpenDevice> &device, QObject *context)
    : QObject(context), m_device(device), m_watcher(device->path, device->root), m_return(device->link, this)
{
    connect(&m_watcher, &DevicePathWatcher::changed, &m_return, &ServiceReturn::onPathChanged);
}

int DeviceReturn::lookForService()
{
    const std::lock_guard lock(OpenDevices::instance().m_mutex);
    if (m_device->comingBack != this)
        return ECANCELED; // the device is closed, or has its service
    const int error = connectAgain();
    if (error == 0) {
        m_device->comingBack = nullptr;
        deleteLater();
    }
    return error;
}

int DeviceReturn::connectAgain()
{
    OpenDevice &device = *m_device;
    UniqueFd socket;
    if (const int error = device.link.connectToNext(&socket))
        return error;
    // A service that goes again while it is spoken to is the next loss.
    const QByteArray said = device.said.join();
    (void)::send(socket.get(), said.constData(), std::size_t(said.size()), MSG_NOSIGNAL);
    if (const int error = device.putBehind(std::move(socket)))
        return error;
    device.link.establish();
    device.bridge.reset(); // which wakes a read that waits on it
    return 0;
}

void DeviceReturn::judgeLoss()
{
    const std::lock_guard lock(OpenDevices::instance().m_mutex);
    if (m_device->comingBack == this && m_device->link.giveUpIfLost())
        m_device->bridge.reset(); // hangs up the descriptor's end of it
}

} // namespace oz
