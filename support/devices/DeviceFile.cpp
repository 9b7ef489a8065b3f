#include <oz/DeviceFile.hpp>

#include "base/Errno.hpp"
#include "events/EventSources.hpp"
#include "sockets/LocalSocket.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFile>

#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <set>
#include <sys/stat.h>

namespace oz {

namespace {

// The descriptors whose devices owe an answer.
class Owing
{
public:
    void insert(int fd)
    {
        const std::lock_guard lock(m_mutex);
        m_descriptors.insert(fd);
    }
    bool take(int fd)
    {
        const std::lock_guard lock(m_mutex);
        return m_descriptors.erase(fd) > 0;
    }

private:
    std::mutex m_mutex;
    std::set<int> m_descriptors;
};

Owing &owing()
{
    static auto *const s_owing = new Owing; // outlives the service thread
    return *s_owing;
}

int waitForInput(int fd, int milliseconds)
{
    pollfd input{fd, POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&input, 1, milliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready;
}

} // namespace

int openDevice(const char *path, int flags)
{
    if ((flags & ~DeviceOpen::CloseOnExec) != DeviceOpen::ReadWrite || !path || *path != '/')
        return fail(EINVAL);
    const QByteArray file = QFile::encodeName(devicePath(QString::fromUtf8(path)));
    const bool closeOnExec = flags & DeviceOpen::CloseOnExec;
    struct stat status;
    if (::stat(file.constData(), &status) == 0 && !S_ISSOCK(status.st_mode))
        return ::open(file.constData(), O_RDWR | O_NOCTTY | (closeOnExec ? O_CLOEXEC : 0));
    UniqueFd socket;
    if (const int error = LocalSocket::connect(file, LocalSocket::Wait::No, &socket, SOCK_STREAM))
        return fail(error);
    // Local sockets are born with close-on-exec.
    if (!closeOnExec && ::fcntl(socket.get(), F_SETFD, 0) < 0)
        return -1;
    return socket.release();
}

ssize_t readDevice(int fd, void *buffer, std::size_t size)
{
    const bool owed = owing().take(fd);
    const int ready = waitForInput(fd, owed ? DeviceAnswerTimeout : 0);
    if (ready < 0)
        return -1;
    if (ready == 0)
        return owed ? fail(ETIMEDOUT) : 0;
    const ssize_t got = ::read(fd, buffer, size);
    if (got == 0 || (got < 0 && errno == ECONNRESET))
        return fail(ENODEV);
    return got;
}

ssize_t writeDevice(int fd, const void *data, std::size_t size)
{
    ssize_t written = ::send(fd, data, size, MSG_NOSIGNAL);
    if (written < 0 && errno == ENOTSOCK)
        written = ::write(fd, data, size);
    if (written < 0 && (errno == EPIPE || errno == ECONNRESET))
        return fail(ENODEV);
    if (written > 0)
        owing().insert(fd);
    return written;
}

int closeDevice(int fd)
{
    (void)owing().take(fd);
    EventSources::forget(fd);
    return ::close(fd);
}

} // namespace oz
