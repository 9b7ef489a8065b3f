#include <oz/DeviceFile.hpp>

#include "base/Errno.hpp"
#include "base/Log.hpp"
#include "devices/OpenDevice.hpp"

#include <QDeadlineTimer>

#include <poll.h>

namespace oz {

namespace {

int waitForInput(int fd, const QDeadlineTimer &deadline)
{
    pollfd input{fd, POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&input, 1, int(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    return ready;
}

} // namespace

int openDevice(const char *path, int flags)
{
    if ((flags & ~DeviceOpen::CloseOnExec) != DeviceOpen::ReadWrite || !path || *path != '/')
        return fail(EINVAL);
    int fd = -1;
    const bool closeOnExec = flags & DeviceOpen::CloseOnExec;
    const int error = OpenDevices::instance().open(QString::fromUtf8(path), closeOnExec, &fd);
    if (error == ENOTSOCK)
        qCWarning(logSupport) << path << "is no device: what lies there is no socket";
    return error ? fail(error) : fd;
}

ssize_t readDevice(int fd, void *buffer, std::size_t size)
{
    const bool isOwed = OpenDevices::instance().takeOwed(fd);
    const QDeadlineTimer deadline(isOwed ? DeviceAnswerTimeout : 0);
    for (;;) {
        const int ready = waitForInput(fd, deadline);
        if (ready < 0)
            return -1;
        if (ready == 0)
            return isOwed ? fail(ETIMEDOUT) : 0;
        const ssize_t got = ::read(fd, buffer, size);
        if (got > 0 || (got < 0 && errno != EAGAIN && errno != ECONNRESET))
            return got;
        // Unless it is the end, something else is behind the descriptor by now.
        if (EventSources::isHungUp(fd) && OpenDevices::instance().judge(fd) != EventSources::HangUp::Bridged)
            return fail(ENODEV);
    }
}

ssize_t writeDevice(int fd, const void *data, std::size_t size)
{
    std::size_t written = 0;
    const QByteArrayView text(static_cast<const char *>(data), qsizetype(size));
    const int error = OpenDevices::instance().write(fd, text, &written);
    return error ? fail(error) : ssize_t(written);
}

int closeDevice(int fd)
{
    const int error = OpenDevices::instance().close(fd);
    return error ? fail(error) : 0;
}

} // namespace oz
