#include "sockets/SocketServer.hpp"

#include <QPointer>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <sys/socket.h>
#include <sys/stat.h>

namespace oz {

namespace {

constexpr std::size_t MaxClients = 1000;
constexpr int TurnsPerClient = 16; // of one client, before the others have their turn
constexpr std::chrono::milliseconds AcceptRetryInterval(100);

} // namespace

SocketServer::~SocketServer()
{
    if (!m_notifier)
        return;
    m_notifier.reset();
    // Before any client hears of the end: one that then looks whether the object is there finds it gone.
    struct stat status;
    if (::lstat(m_file.constData(), &status) == 0 && status.st_ino == m_inode)
        ::unlink(m_file.constData());
}

int SocketServer::listen(const QByteArray &path, int type, mode_t mode)
{
    if (m_notifier)
        return EADDRINUSE;
    m_file = path;
    if (const int error = LocalSocket::listen(m_file, mode, &m_socket, type))
        return error;
    struct stat status;
    if (::lstat(m_file.constData(), &status) == 0)
        m_inode = status.st_ino;
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { acceptClient(); });
    return 0;
}

void SocketServer::acceptClient()
{
    UniqueFd accepted(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!accepted) {
        // Out of descriptors or memory: nothing tells when there is more, so it is tried from time to time.
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            m_notifier->setEnabled(false);
            const auto retry = [this] { m_notifier->setEnabled(m_connections.size() < MaxClients); };
            QTimer::singleShot(AcceptRetryInterval, m_notifier.get(), retry);
        }
        return;
    }
    ucred credentials{};
    socklen_t size = sizeof credentials;
    ::getsockopt(accepted.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
    const quint64 id = ++m_lastId;
    Connection &connection = m_connections[id];
    connection.client = {id, credentials.pid, credentials.uid, credentials.gid};
    connection.notifier = std::make_unique<QSocketNotifier>(accepted.get(), QSocketNotifier::Read);
    connection.socket = std::move(accepted);
    connected(connection);
    connect(connection.notifier.get(), &QSocketNotifier::activated, this, [this, id] { receiveFrom(id); });
    m_notifier->setEnabled(m_connections.size() < MaxClients);
}

void SocketServer::receiveFrom(quint64 id)
{
    const QPointer<SocketServer> alive(this);
    for (int turn = 0; turn < TurnsPerClient && alive; ++turn) {
        Connection *connection = find(id);
        if (!connection)
            return;
        const int error = receive(*connection);
        if (error == EAGAIN || !alive)
            return;
        if (error)
            return drop(id);
    }
}

SocketServer::Connection *SocketServer::find(quint64 id)
{
    const auto found = m_connections.find(id);
    return found == m_connections.end() ? nullptr : &found->second;
}

void SocketServer::drop(quint64 id)
{
    const auto found = m_connections.find(id);
    if (found == m_connections.end())
        return;
    const Client client = found->second.client;
    m_connections.erase(found);
    m_notifier->setEnabled(true);
    disconnected(client);
}

} // namespace oz
