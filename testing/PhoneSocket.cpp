#include "PhoneSocket.hpp"

#include <oz/Limits.hpp>

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace oz::testing {

namespace {

bool hasInput(int fd, int milliseconds)
{
    pollfd input{fd, POLLIN, 0};
    int count = 0;
    while ((count = ::poll(&input, 1, milliseconds)) < 0 && errno == EINTR) { }
    return count > 0;
}

void runLoopUntilInput(int fd, const QDeadlineTimer &deadline)
{
    QEventLoop loop;
    QSocketNotifier notifier(fd, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    QTimer::singleShot(std::chrono::milliseconds(deadline.remainingTime()), &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

PhoneSocket::~PhoneSocket()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

int PhoneSocket::connect(const QString &path)
{
    sockaddr_un address{};
    const QByteArray file = QFile::encodeName(path);
    if (file.size() >= qsizetype(sizeof address.sun_path))
        return ENAMETOOLONG;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, file.constData(), std::size_t(file.size()));
    m_fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (m_fd < 0)
        return errno;
    // One message has to fit; the kernel grants what its limit allows.
    const int wanted = int(MaxMessageSize);
    ::setsockopt(m_fd, SOL_SOCKET, SO_SNDBUF, &wanted, sizeof wanted);
    int result = 0;
    while ((result = ::connect(m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address)) < 0
        && errno == EINTR) { }
    return result < 0 ? errno : 0;
}

int PhoneSocket::send(const QByteArray &message) const
{
    return ::send(m_fd, message.constData(), std::size_t(message.size()), MSG_NOSIGNAL) < 0 ? errno : 0;
}

int PhoneSocket::receive(QByteArray *message, std::chrono::milliseconds limit, bool runsLoop) const
{
    const QDeadlineTimer deadline(limit);
    while (!hasInput(m_fd, 0)) {
        if (deadline.hasExpired())
            return ETIMEDOUT;
        if (runsLoop && QAbstractEventDispatcher::instance())
            runLoopUntilInput(m_fd, deadline);
        else
            (void)hasInput(m_fd, int(std::min<qint64>(deadline.remainingTime(), INT_MAX)));
    }
    const ssize_t size = ::recv(m_fd, nullptr, 0, MSG_PEEK | MSG_TRUNC);
    if (size <= 0)
        return size == 0 ? ECONNRESET : errno;
    message->resize(size);
    return ::recv(m_fd, message->data(), std::size_t(size), 0) == size ? 0 : errno;
}

} // namespace oz::testing
