#include "PowerDevice.hpp"

#include <oz/DeviceRoot.hpp>

#include <QDir>
#include <QFile>

#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace oz::bench {

namespace {

void sendLine(int client, const std::string &value)
{
    const std::string line = "status" + value + "\n";
    (void)::send(client, line.data(), line.size(), MSG_NOSIGNAL);
}

bool closeIfGone(int client)
{
    pollfd state{client, 0, 0};
    return ::poll(&state, 1, 0) > 0 && ::close(client) == 0;
}

} // namespace

PowerDevice::PowerDevice() : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    QDir().mkpath(devicePath(QStringLiteral("/dev/power")));
    const QByteArray path = QFile::encodeName(devicePath(QStringLiteral("/dev/power/mgr")));
    sockaddr_un address{AF_UNIX, {}};
    std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
    ::unlink(path.constData());
    if (::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) < 0
        || ::listen(m_socket, SOMAXCONN) < 0)
        std::abort();
    m_thread = std::thread([this] {
        for (int client = 0; (client = ::accept(m_socket, nullptr, nullptr)) >= 0;) {
            sendLine(client, "active");
            const std::lock_guard lock(m_mutex);
            std::erase_if(m_clients, closeIfGone);
            m_clients.push_back(client);
        }
    });
}

PowerDevice::~PowerDevice()
{
    ::shutdown(m_socket, SHUT_RDWR);
    m_thread.join();
    ::close(m_socket);
    for (const int client : m_clients)
        ::close(client);
}

void PowerDevice::send(const std::string &value)
{
    const std::lock_guard lock(m_mutex);
    for (const int client : m_clients)
        sendLine(client, value);
}

} // namespace oz::bench
