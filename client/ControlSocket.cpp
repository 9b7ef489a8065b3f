#include "ControlSocket.hpp"

#include "sockets/LocalSocket.hpp"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <poll.h>
#include <vector>

namespace oz::client {

int ControlSocket::connect(const QString &file)
{
    return LocalSocket::connect(QFile::encodeName(file), LocalSocket::Wait::No, &m_socket);
}

int ControlSocket::send(const QByteArray &message) const
{
    return LocalSocket::send(m_socket.get(), message, LocalSocket::Wait::No);
}

int ControlSocket::receive(QByteArray *message) const
{
    return LocalSocket::receive(m_socket.get(), message, LocalSocket::Wait::No);
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
