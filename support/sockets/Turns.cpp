#include "sockets/Turns.hpp"

#include "sockets/SocketServer.hpp"

#include <QAbstractEventDispatcher>

#include <chrono>
#include <vector>

namespace oz {

namespace {
constexpr std::chrono::milliseconds TurnTime(1);
} // namespace

Turns &Turns::ofThisThread()
{
    static thread_local Turns s_turns;
    return s_turns;
}

Turns::Turns()
{
    m_next.setSingleShot(true);
    connect(&m_next, &QTimer::timeout, this, &Turns::serveAll);
    if (const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, &Turns::onEventLoopAwake);
}

void Turns::onEventLoopAwake()
{
    for (auto user = m_users.begin(); user != m_users.end();) {
        user->second.hadTurn = false;
        user = user->second.waiting.empty() ? m_users.erase(user) : std::next(user);
    }
}

bool Turns::begin(uid_t user)
{
    User &own = m_users[user];
    return own.waiting.empty() && !std::exchange(own.hadTurn, true);
}

void Turns::queue(SocketServer *server, uid_t user, quint64 id)
{
    m_users[user].waiting.push_back({server, id});
    if (!m_next.isActive())
        m_next.start(0);
}

QDeadlineTimer Turns::end()
{
    return {TurnTime, Qt::PreciseTimer};
}

void Turns::serveAll()
{
    std::vector<uid_t> users;
    for (const auto &[uid, user] : m_users) {
        if (!user.waiting.empty())
            users.push_back(uid);
    }
    for (const uid_t uid : users)
        serveTurnOf(uid);
}

// Users come and go while one is served.
void Turns::serveTurnOf(uid_t uid)
{
    const QDeadlineTimer turnEnd = end();
    do {
        const auto user = m_users.find(uid);
        if (user == m_users.end() || user->second.waiting.empty())
            return;
        const Waiting next = user->second.waiting.front();
        user->second.waiting.pop_front();
        if (next.server)
            next.server->serve(next.id, turnEnd);
    } while (!turnEnd.hasExpired());
    if (const auto user = m_users.find(uid);
        user != m_users.end() && !user->second.waiting.empty() && !m_next.isActive())
        m_next.start(0);
}

} // namespace oz
