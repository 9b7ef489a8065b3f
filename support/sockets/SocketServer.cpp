#include "sockets/SocketServer.hpp"

#include "base/UserWarnings.hpp"
#include "sockets/Turns.hpp"

#include <QFile>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace oz {

namespace {

constexpr std::size_t MostClients = 1000; // of one server
constexpr int MostClientsOfUser = 500; // of one server
constexpr int MessagesPerTurn = 16; // keeps together what a client sends in one go
constexpr std::chrono::milliseconds AcceptRetryInterval(100);
constexpr int ReservedDescriptors = 64; // for the service's own work

std::atomic<int> s_connections = 0; // of all servers of the process

bool areDescriptorsShort()
{
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0
        && rlim_t(s_connections + ReservedDescriptors) >= limit.rlim_cur;
}

QList<gid_t> groupsOf(int socket)
{
    QList<gid_t> groups(32);
    for (;;) {
        socklen_t size = socklen_t(groups.size() * qsizetype(sizeof(gid_t)));
        const int result = ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
        if (result < 0 && errno != ERANGE)
            return {};
        const bool isComplete = result == 0;
        groups.resize(qsizetype(size / sizeof(gid_t)));
        if (isComplete)
            return groups;
    }
}

} // namespace

SocketServer::~SocketServer()
{
    s_connections -= int(m_connections.size());
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
    ::fcntl(m_socket.get(), F_SETFL, O_NONBLOCK); // a client may be gone before it is accepted
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SocketServer::acceptClients);
    return 0;
}

void SocketServer::acceptClients()
{
    const QPointer<SocketServer> alive(this);
    const QDeadlineTimer end = Turns::end();
    do {
        if (!acceptClient())
            return;
    } while (alive && !end.hasExpired());
}

// False if no client waits.
bool SocketServer::acceptClient()
{
    UniqueFd accepted(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!accepted) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
            acceptLater();
        return false;
    }
    ucred credentials{};
    socklen_t size = sizeof credentials;
    ::getsockopt(accepted.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
    const QPointer<SocketServer> alive(this);
    if (!makeRoomFor(credentials.uid))
        return alive;
    const quint64 id = ++m_lastId;
    ++m_users[credentials.uid];
    ++s_connections;
    Connection &connection = m_connections[id];
    connection.client = {id, credentials.pid, credentials.uid, credentials.gid, groupsOf(accepted.get())};
    connection.lastTurn = ++m_lastTurn;
    connection.notifier = std::make_unique<QSocketNotifier>(accepted.get(), QSocketNotifier::Read);
    connection.socket = std::move(accepted);
    connect(connection.notifier.get(), &QSocketNotifier::activated, this, [this, id] { onReadable(id); });
    connected(connection);
    return alive;
}

// No event tells when there are descriptors or memory again, so accepting is tried from time to time.
void SocketServer::acceptLater()
{
    m_notifier->setEnabled(false);
    QTimer::singleShot(AcceptRetryInterval, m_notifier.get(), [this] { m_notifier->setEnabled(true); });
}

bool SocketServer::makeRoomFor(uid_t uid)
{
    const auto user = m_users.find(uid);
    const int own = user == m_users.end() ? 0 : user->second;
    const bool isUserFull = own >= MostClientsOfUser;
    if (!isUserFull && m_connections.size() < MostClients && !areDescriptorsShort())
        return true;
    const auto most = std::max_element(m_users.begin(), m_users.end(),
        [](const auto &one, const auto &other) { return one.second < other.second; });
    if (most == m_users.end())
        return false; // the descriptors are used for something else
    const uid_t whose = isUserFull ? uid : most->first;
    UserWarnings::ofThisThread().warn(whose,
        QLatin1String("has as many connections to ") + QFile::decodeName(m_file)
            + QLatin1String(" as it takes; some are ended or refused"));
    const Connection *leaving = leastRecentOf(whose, Among::Idle);
    // A user never gives way to one who has as many.
    if (!leaving && !isUserFull && most->second > own + 1)
        leaving = leastRecentOf(whose, Among::All);
    if (!leaving)
        return false;
    const QPointer<SocketServer> alive(this);
    drop(leaving->client.id);
    return alive;
}

const SocketServer::Connection *SocketServer::leastRecentOf(uid_t uid, Among among) const
{
    const Connection *leastRecent = nullptr;
    for (const auto &[id, connection] : m_connections) {
        const bool isIdle = connection.holds == 0 && connection.notifier->isEnabled();
        if (connection.client.uid == uid && (isIdle || among == Among::All)
            && (!leastRecent || connection.lastTurn < leastRecent->lastTurn))
            leastRecent = &connection;
    }
    return leastRecent;
}

void SocketServer::onReadable(quint64 id)
{
    Connection *connection = find(id);
    if (!connection)
        return;
    Turns &turns = Turns::ofThisThread();
    if (turns.begin(connection->client.uid))
        return serve(id, Turns::end());
    connection->notifier->setEnabled(false);
    turns.queue(this, connection->client.uid, id);
}

void SocketServer::serve(quint64 id, const QDeadlineTimer &end)
{
    const QPointer<SocketServer> alive(this);
    for (int message = 0; message < MessagesPerTurn; ++message) {
        Connection *connection = find(id);
        if (!connection)
            return;
        connection->lastTurn = ++m_lastTurn;
        const int error = receive(*connection);
        if (!alive)
            return;
        if (error && error != EAGAIN)
            return drop(id);
        if (error == EAGAIN || end.hasExpired())
            break;
    }
    Connection *still = find(id);
    if (!still)
        return;
    // The kernel tells whether more has come, but not of what was received with a former message.
    const bool isWaiting = hasMore(id);
    still->notifier->setEnabled(!isWaiting);
    if (isWaiting)
        Turns::ofThisThread().queue(this, still->client.uid, id);
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
    --s_connections;
    if (const auto user = m_users.find(client.uid); --user->second == 0)
        m_users.erase(user);
    disconnected(client);
}

void SocketServer::hold(quint64 id)
{
    if (Connection *connection = find(id))
        ++connection->holds;
}

void SocketServer::release(quint64 id)
{
    if (Connection *connection = find(id))
        --connection->holds;
}

} // namespace oz
