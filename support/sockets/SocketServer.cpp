#include "sockets/SocketServer.hpp"

#include "base/Log.hpp"

#include <QAbstractEventDispatcher>
#include <QPointer>

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
constexpr int AcceptedAtOnce = 64;
constexpr int TurnsAtOnce = 4; // before the event loop looks who else has come
constexpr int MessagesPerTurn = 16; // what a client sent in one go stays together
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
    if (const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance(thread())) {
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] {
            for (auto &[uid, user] : m_users)
                user.hadTurn = false;
        });
    }
    m_turns.setSingleShot(true);
    connect(&m_turns, &QTimer::timeout, this, &SocketServer::serveTurns);
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SocketServer::acceptClients);
    return 0;
}

void SocketServer::acceptClients()
{
    const QPointer<SocketServer> alive(this);
    for (int count = 0; count < AcceptedAtOnce && alive; ++count) {
        if (!acceptClient())
            return;
    }
}

// Whether there was one.
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
    ++m_users[credentials.uid].connections;
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

// Nothing tells when there are descriptors or memory again, so it is tried from time to time.
void SocketServer::acceptLater()
{
    m_notifier->setEnabled(false);
    QTimer::singleShot(AcceptRetryInterval, m_notifier.get(), [this] { m_notifier->setEnabled(true); });
}

bool SocketServer::makeRoomFor(uid_t uid)
{
    User &user = m_users[uid];
    const bool isUserFull = user.connections >= MostClientsOfUser;
    if (!isUserFull && m_connections.size() < MostClients && !areDescriptorsShort())
        return true;
    if (!std::exchange(user.wasTold, true)) {
        qCWarning(logSupport).noquote()
            << m_file << "has as many clients as it takes, of user" << uid << user.connections << "of"
            << m_connections.size() << "in all; those with nothing under way give way";
    }
    const auto most = std::max_element(m_users.begin(), m_users.end(),
        [](const auto &one, const auto &other) { return one.second.connections < other.second.connections; });
    return dropIdleClientOf(isUserFull ? uid : most->first);
}

bool SocketServer::dropIdleClientOf(uid_t uid)
{
    const Connection *oldest = nullptr;
    for (const auto &[id, connection] : m_connections) {
        const bool isIdle = connection.holds == 0 && connection.notifier->isEnabled();
        if (connection.client.uid == uid && isIdle && (!oldest || connection.lastTurn < oldest->lastTurn))
            oldest = &connection;
    }
    if (!oldest)
        return false;
    const QPointer<SocketServer> alive(this);
    drop(oldest->client.id);
    return alive;
}

void SocketServer::onReadable(quint64 id)
{
    Connection *connection = find(id);
    if (!connection)
        return;
    // A turn of each user at once, as it comes.
    User &user = m_users[connection->client.uid];
    if (user.waiting.empty() && !std::exchange(user.hadTurn, true))
        return serve(id);
    connection->notifier->setEnabled(false);
    user.waiting.push_back(id);
    if (!m_turns.isActive())
        m_turns.start(0);
}

// A turn of one user, and then one of the next.
void SocketServer::serveTurns()
{
    const QPointer<SocketServer> alive(this);
    const auto isWaiting = [](const auto &user) { return !user.second.waiting.empty(); };
    for (int turn = 0; turn < TurnsAtOnce; ++turn) {
        auto next = std::find_if(m_users.upper_bound(m_lastServed), m_users.end(), isWaiting);
        if (next == m_users.end())
            next = std::find_if(m_users.begin(), m_users.end(), isWaiting);
        if (next == m_users.end())
            return;
        m_lastServed = next->first;
        const quint64 id = next->second.waiting.front();
        next->second.waiting.pop_front();
        serve(id);
        if (!alive)
            return;
    }
    m_turns.start(0);
}

void SocketServer::serve(quint64 id)
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
        if (error == EAGAIN)
            break;
        if (error)
            return drop(id);
    }
    // Whether there is more is asked together with all others.
    if (Connection *still = find(id))
        still->notifier->setEnabled(true);
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
    if (const auto user = m_users.find(client.uid); --user->second.connections == 0)
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
