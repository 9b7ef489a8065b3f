#include "devices/DeviceReturn.hpp"

#include "sockets/LocalSocket.hpp"

#include <QTimer>

#include <cerrno>
#include <sys/socket.h>
#include <sys/stat.h>

namespace oz {

namespace {

using namespace std::chrono_literals;
using LocalSocket::Wait;

// A process that dies ends its connections before it stops listening.
constexpr auto SettleTime = 100ms;
// A socket that has just got its name may not be listened on yet, and nothing tells when it is.
constexpr auto FirstPause = 10ms;
constexpr auto LongestPause = 1s;

} // namespace

void DeviceReturn::await(const std::shared_ptr<OpenDevice> &device, QObject *context)
{
    const std::lock_guard lock(OpenDevices::instance().m_mutex);
    if (device->fd < 0 || device->comingBack || device->link == OpenDevice::Link::Up)
        return;
    device->comingBack = new DeviceReturn(device, context);
}

DeviceReturn::DeviceReturn(const std::shared_ptr<OpenDevice> &device, QObject *context)
    : QObject(context), m_device(device), m_watcher(device->path, device->root), m_pause(FirstPause)
{
    connect(&m_watcher, &DevicePathWatcher::changed, this, &DeviceReturn::onPathChanged);
    // Any other timer may be early.
    const auto graceLeft = std::chrono::milliseconds(device->awayUntil.remainingTime() + 1);
    for (const std::chrono::milliseconds moment : {std::chrono::milliseconds(SettleTime), graceLeft})
        QTimer::singleShot(moment, Qt::PreciseTimer, this, &DeviceReturn::giveUpWhereLost);
    QMetaObject::invokeMethod(this, &DeviceReturn::look, Qt::QueuedConnection);
}

void DeviceReturn::onPathChanged()
{
    m_pause = FirstPause;
    look();
}

void DeviceReturn::look()
{
    const std::lock_guard lock(OpenDevices::instance().m_mutex);
    if (m_device->comingBack != this)
        return;
    const int error = connectAgain();
    if (error == 0) {
        m_device->comingBack = nullptr;
        deleteLater();
    } else if (error == EAGAIN || (error == ECONNREFUSED && m_pause < LongestPause)) {
        QTimer::singleShot(m_pause, this, &DeviceReturn::look);
        m_pause = std::min<std::chrono::milliseconds>(m_pause * 2, LongestPause);
    }
}

int DeviceReturn::connectAgain()
{
    OpenDevice &device = *m_device;
    struct stat status;
    if (::stat(device.file().constData(), &status) < 0)
        return errno;
    const FileIdentity present(status);
    if (present == device.service || !S_ISSOCK(status.st_mode))
        return ENOENT;
    UniqueFd socket;
    if (const int error = LocalSocket::connect(device.file(), Wait::No, &socket, SOCK_STREAM))
        return error;
    // A service that goes again while it is spoken to is the next loss.
    const QByteArray said = device.said.join();
    (void)::send(socket.get(), said.constData(), std::size_t(said.size()), MSG_NOSIGNAL);
    if (const int error = device.putBehind(std::move(socket)))
        return error;
    device.service = present;
    device.link = OpenDevice::Link::Up;
    device.bridge.reset(); // which wakes a read that waits on it
    return 0;
}

void DeviceReturn::giveUpWhereLost()
{
    const std::lock_guard lock(OpenDevices::instance().m_mutex);
    OpenDevice &device = *m_device;
    if (m_device->comingBack != this || device.link != OpenDevice::Link::Away)
        return;
    const auto serviceLives = [&device] {
        struct stat status;
        UniqueFd probe;
        if (::stat(device.file().constData(), &status) < 0 || !(FileIdentity(status) == device.service))
            return false;
        const int error = LocalSocket::connect(device.file(), Wait::No, &probe, SOCK_STREAM);
        return error == 0 || error == EAGAIN;
    };
    if (!device.awayUntil.hasExpired() && !serviceLives())
        return;
    device.link = OpenDevice::Link::Gone;
    device.bridge.reset(); // what stands behind the descriptor hangs up
}

} // namespace oz
