#include "devices/OpenDevice.hpp"

#include "devices/DeviceReturn.hpp"
#include "events/ServiceThread.hpp"

#include <oz/DeviceRoot.hpp>

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace oz {

using EventSources::HangUp;

namespace {

constexpr qsizetype MostSaid = 16;
constexpr qsizetype LongestLine = 4096;

} // namespace

void OpenDevice::note(QByteArrayView text)
{
    line += text;
    for (qsizetype end = line.indexOf('\n'); end >= 0; end = line.indexOf('\n')) {
        const QByteArray complete = line.first(end + 1);
        line.remove(0, end + 1);
        said.removeAll(complete);
        said.append(complete);
    }
    if (said.size() > MostSaid)
        said.removeFirst();
    if (line.size() > LongestLine)
        line.clear();
}

int OpenDevice::putBehind(UniqueFd socket)
{
    EventSources::suspend(fd);
    const int result = ::dup3(socket.get(), fd, closeOnExec ? O_CLOEXEC : 0);
    const int error = result < 0 ? errno : 0;
    EventSources::resume(fd);
    return error;
}

OpenDevices &OpenDevices::instance()
{
    static auto *const s_instance = new OpenDevices; // outlives the platform's own thread
    return *s_instance;
}

OpenDevices::OpenDevices()
{
    EventSources::judgeHangUps([](int fd) { return instance().judge(fd); });
}

int OpenDevices::open(const QString &path, bool closeOnExec, int *fd)
{
    auto device = std::make_shared<OpenDevice>(deviceRoot(), path);
    device->closeOnExec = closeOnExec;
    struct stat status;
    if (::stat(device->link.file().constData(), &status) < 0)
        return errno;
    if (!S_ISSOCK(status.st_mode))
        return ENOTSOCK;
    UniqueFd socket;
    if (const int error = device->link.connect(LocalSocket::Wait::No, &socket))
        return error;
    // Local sockets are born with close-on-exec.
    if (!closeOnExec && ::fcntl(socket.get(), F_SETFD, 0) < 0)
        return errno;
    device->link.establish();
    const std::lock_guard lock(m_mutex);
    *fd = device->fd = socket.release();
    m_devices[*fd] = std::move(device);
    return 0;
}

int OpenDevices::close(int fd)
{
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_devices.find(fd); found != m_devices.end()) {
        OpenDevice &device = *found->second;
        device.fd = -1;
        ServiceThread *thread = device.comingBack ? ServiceThread::instance() : nullptr;
        if (thread)
            thread->post([gone = std::exchange(device.comingBack, nullptr)](QObject *) { delete gone; });
        m_devices.erase(found);
    }
    EventSources::forget(fd);
    return ::close(fd) < 0 ? errno : 0;
}

int OpenDevices::write(int fd, QByteArrayView text, std::size_t *written)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_devices.find(fd);
    if (found == m_devices.end())
        return EBADF;
    OpenDevice &device = *found->second;
    ssize_t size = text.size();
    if (!device.link.isAway()) {
        size = ::send(fd, text.data(), std::size_t(text.size()), MSG_NOSIGNAL);
        const int error = size < 0 ? errno : 0;
        const bool isGone = error == EPIPE || error == ECONNRESET;
        if (isGone && judgeLocked(fd) == HangUp::Bridged)
            size = text.size();
        else if (error)
            return isGone ? ENODEV : error;
    }
    device.note(text.first(size));
    device.owesAnswer = device.owesAnswer || size > 0;
    *written = std::size_t(size);
    return 0;
}

bool OpenDevices::takeOwed(int fd)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_devices.find(fd);
    return found != m_devices.end() && std::exchange(found->second->owesAnswer, false);
}

HangUp OpenDevices::judge(int fd)
{
    const std::lock_guard lock(m_mutex);
    return judgeLocked(fd);
}

HangUp OpenDevices::judgeLocked(int fd)
{
    const auto found = m_devices.find(fd);
    if (found == m_devices.end())
        return HangUp::Final;
    // Another may have been here before.
    if (!EventSources::isHungUp(fd))
        return HangUp::Bridged;
    return found->second->link.isUp() ? lose(found->second) : HangUp::Lost;
}

HangUp OpenDevices::lose(const std::shared_ptr<OpenDevice> &device)
{
    ServiceThread *thread = ServiceThread::instance();
    if (!thread)
        return HangUp::Final;
    // An answer that was under way is lost.
    device->link.lose();
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0) {
        UniqueFd other(ends[1]);
        if (device->putBehind(UniqueFd(ends[0])) == 0)
            device->bridge = std::move(other);
    }
    if (!device->bridge)
        device->link.giveUp(); // the client sees the end
    thread->post([device](QObject *context) { DeviceReturn::await(device, context); });
    return device->bridge ? HangUp::Bridged : HangUp::Lost;
}

} // namespace oz
