#include "ControlSocket.hpp"

#include <oz/Limits.hpp>

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace oz::client {

ControlSocket::~ControlSocket()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

int ControlSocket::connect(const QString &file)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    QByteArray path = QFile::encodeName(file);
    int folder = -1;
    if (path.size() >= qsizetype(sizeof address.sun_path)) {
        // The address is too short for the path, but not for the name of a descriptor of its folder.
        const qsizetype slash = path.lastIndexOf('/');
        folder = ::open(path.first(slash + 1).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (folder < 0)
            return errno;
        path = "/proc/self/fd/" + QByteArray::number(folder) + path.sliced(slash);
    }
    std::memcpy(
        address.sun_path, path.constData(), std::min(std::size_t(path.size()), sizeof address.sun_path - 1));
    if (m_descriptor < 0) {
        m_descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        // One message has to fit; the kernel grants what its limit allows.
        const int wanted = int(MaxMessageSize);
        ::setsockopt(m_descriptor, SOL_SOCKET, SO_SNDBUF, &wanted, sizeof wanted);
    }
    const int result =
        ::connect(m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) < 0 ? errno : 0;
    if (folder >= 0)
        ::close(folder);
    return result;
}

int ControlSocket::send(const QByteArray &message) const
{
    const auto size = std::size_t(message.size());
    return ::send(m_descriptor, message.constData(), size, MSG_NOSIGNAL) < 0 ? errno : 0;
}

int ControlSocket::receive(QByteArray *message) const
{
    const ssize_t size = ::recv(m_descriptor, nullptr, 0, MSG_PEEK | MSG_TRUNC);
    if (size <= 0)
        return size == 0 ? ECONNRESET : errno;
    message->resize(size);
    return ::recv(m_descriptor, message->data(), std::size_t(size), 0) == size ? 0 : errno;
}

void waitForInput(std::initializer_list<int> descriptors, const QDeadlineTimer &deadline, bool runsEventLoop)
{
    std::vector<pollfd> inputs;
    for (const int descriptor : descriptors)
        inputs.push_back({descriptor, POLLIN, 0});
    const auto wait = [&](qint64 milliseconds) {
        int count = 0;
        while (
            (count = ::poll(inputs.data(), inputs.size(), int(std::min<qint64>(milliseconds, INT_MAX)))) < 0
            && errno == EINTR) { }
        return count > 0;
    };
    if (!runsEventLoop || !QAbstractEventDispatcher::instance()) {
        (void)wait(deadline.remainingTime());
        return;
    }
    if (wait(0))
        return;
    QEventLoop loop;
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers;
    for (const int descriptor : descriptors) {
        if (descriptor < 0)
            continue;
        notifiers.push_back(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read));
        QObject::connect(notifiers.back().get(), &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    }
    QTimer::singleShot(std::chrono::milliseconds(deadline.remainingTime()), &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace oz::client
