#include "pps/PpsServedChannel.hpp"

#include "base/Log.hpp"

#include <oz/Limits.hpp>
#include <oz/PpsText.hpp>

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>

namespace oz {

namespace {

using namespace std::chrono_literals;

// What is kept for a service that is away fits the queue of a fresh socket.
constexpr qsizetype MostKeptBytes = 64 * 1024;
constexpr std::size_t MostKept = 64;

// A process that dies ends its connections before it stops listening.
constexpr auto SettleTime = 100ms;
// Nothing tells when a service has accepted enough for another to connect.
constexpr auto CrowdPause = 100ms;

// For whom it is enough that the watcher stops waiting.
class Waker final : public FileSubscriber
{
    void fileChanged() override { }
};

} // namespace

using LocalSocket::Wait;

PpsServedChannel::PpsServedChannel(
    const PpsPath &path, PpsOpenMode::Types mode, bool blocking, PpsChannelOwner *owner)
    : m_path(path), m_file(path.filePath()), m_mode(mode), m_blocking(blocking), m_owner(owner)
{
}

PpsServedChannel::~PpsServedChannel()
{
    PpsServedChannel::detach();
}

int PpsServedChannel::connect(Wait wait)
{
    struct stat status;
    if (::stat(m_file.constData(), &status) < 0)
        return errno;
    const FileIdentity present(status);
    UniqueFd socket;
    if (const int error = LocalSocket::connect(m_file, wait, &socket))
        return error;
    if (m_blocking && ::fcntl(socket.get(), F_SETFL, 0) < 0)
        return errno;
    m_server = present;
    m_socket = std::move(socket);
    m_link = Link::Up;
    return 0;
}

int PpsServedChannel::read(QByteArray *message)
{
    Lock lock(m_mutex);
    for (;;) {
        // A read that finds the connection ended while nothing is owed to it has lost nothing.
        if (m_link == Link::Up && m_blocking && LocalSocket::hasEnded(m_socket.get()))
            lose();
        if (std::exchange(m_lossUntold, false))
            return ECONNRESET;
        if (m_link != Link::Up && !tryReturn() && m_link == Link::Away) {
            if (!m_blocking)
                return EAGAIN;
            (void)waitForReturn(&lock);
        }
        if (m_link != Link::Up) {
            m_lossUntold = false;
            return ECONNRESET;
        }

        // Only this thread exchanges the socket, so others may write meanwhile.
        const int socket = m_socket.get();
        lock.unlock();
        QByteArray received;
        const int error = LocalSocket::receive(socket, &received, m_blocking ? Wait::Yes : Wait::No);
        lock.lock();
        if (error == ECONNRESET) {
            lose();
            if (!m_blocking)
                continue;
            m_lossUntold = false;
            return error;
        }
        if (m_notifier)
            m_notifier->setEnabled(true);
        if (error == 0) {
            m_owed = std::max<qsizetype>(m_owed - 1, 0);
            *message = filterLines(received, m_path.filter);
        }
        return error;
    }
}

int PpsServedChannel::write(const QByteArray &message)
{
    // An empty message could not be told from the end of the connection.
    if (message.isEmpty())
        return EINVAL;
    if (message.size() > PpsText::MaxMessageSize)
        return EMSGSIZE;
    PpsWatcher::endTurn();
    Lock lock(m_mutex);
    const bool mayWait = m_blocking || !m_context;
    const bool isAtHome = !m_home || QThread::currentThread() == m_home;
    if (m_link == Link::Up) {
        const int error = send(message);
        if (error != EPIPE)
            return error;
        // What the service had sent is read first; the event loop sees to the rest.
        if (!isAtHome || !LocalSocket::hasEnded(m_socket.get()))
            return isAtHome && mayWait ? error : keep(message);
        lose();
    }
    if (isAtHome) {
        if (mayWait && std::exchange(m_lossUntold, false))
            return EPIPE;
        if (!tryReturn() && m_link == Link::Away && m_blocking)
            (void)waitForReturn(&lock);
        if (m_link == Link::Up)
            return send(message);
    }
    if (m_link == Link::Away)
        return keep(message);
    m_lossUntold = m_lossUntold && !mayWait;
    return EPIPE;
}

void PpsServedChannel::attach(bool announces)
{
    m_announces = m_announces || announces;
    if (!QAbstractEventDispatcher::instance())
        return;
    const Lock lock(m_mutex);
    if (m_context) {
        if (m_notifier)
            m_notifier->setEnabled(true);
        return;
    }
    m_context = std::make_unique<QObject>();
    m_home = QThread::currentThread();
    if (m_link == Link::Up)
        follow();
    else
        awaitReturn();
}

void PpsServedChannel::detach()
{
    const Lock lock(m_mutex);
    m_notifier.reset();
    stopWaiting();
    m_context.reset();
    m_home = nullptr;
}

void PpsServedChannel::follow()
{
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    QObject::connect(
        m_notifier.get(), &QSocketNotifier::activated, m_context.get(), [this] { onActivated(); });
}

void PpsServedChannel::onActivated()
{
    Lock lock(m_mutex);
    if (LocalSocket::hasEnded(m_socket.get())) {
        lose();
        return;
    }
    if (!(m_mode & PpsOpenMode::Subscribe)) {
        // Nobody reads it, and it would fill the service's queue.
        QByteArray unwanted;
        (void)LocalSocket::receive(m_socket.get(), &unwanted, Wait::No);
        return;
    }
    // Until it is read, one message is one call.
    m_notifier->setEnabled(false);
    lock.unlock();
    if (m_announces)
        m_owner->messageWaits();
}

void PpsServedChannel::lose()
{
    m_notifier.reset();
    m_socket.reset();
    m_link = Link::Away;
    m_lossUntold = m_lossUntold || m_owed > 0;
    m_owed = 0;
    m_awayUntil.setRemainingTime(graceTime());
    m_unsettledUntil.setRemainingTime(SettleTime);
    if (!m_context)
        return;
    if (m_lossUntold)
        tellLater();
    awaitReturn();
}

void PpsServedChannel::awaitReturn()
{
    m_waiting = std::make_unique<QObject>();
    for (const QDeadlineTimer &deadline : {m_unsettledUntil, m_awayUntil}) {
        // Any other timer may be early.
        const std::chrono::milliseconds left(deadline.remainingTime() + 1);
        QTimer::singleShot(left, Qt::PreciseTimer, m_waiting.get(), [this] {
            const Lock lock(m_mutex);
            if (isLost())
                giveUp();
        });
    }
    m_watcher = PpsWatcher::forThisThread();
    m_watched = m_watcher->watch(m_file, this);
    (void)tryReturn();
}

bool PpsServedChannel::waitForReturn(Lock *lock)
{
    const auto watcher = PpsWatcher::forThisThread();
    Waker waker;
    WatchedFile *const watched = watcher->watch(m_file, &waker);
    while (!tryReturn() && m_link == Link::Away) {
        if (isLost()) {
            giveUp();
            break;
        }
        lock->unlock();
        (void)watcher->wait(
            m_unsettledUntil.hasExpired() ? m_awayUntil : std::min(m_unsettledUntil, m_awayUntil));
        lock->lock();
    }
    watcher->unwatch(watched, &waker);
    return m_link == Link::Up;
}

bool PpsServedChannel::tryReturn()
{
    if (m_link == Link::Up)
        return true;
    if (!m_context && isLost())
        giveUp();
    struct stat status;
    if (::stat(m_file.constData(), &status) < 0 || FileIdentity(status) == m_server)
        return false;
    const int error = S_ISSOCK(status.st_mode) ? connect(Wait::No) : ENOTSOCK;
    if (error == EAGAIN && m_waiting) {
        QTimer::singleShot(CrowdPause, m_waiting.get(), [this] { announce(); });
    }
    if (error)
        return false;
    stopWaiting();
    (void)sendKept();
    if (m_context) {
        follow();
        QMetaObject::invokeMethod(
            m_context.get(), [this] { m_owner->serviceReturned(); }, Qt::QueuedConnection);
    }
    return true;
}

bool PpsServedChannel::isLost() const
{
    if (m_link != Link::Away)
        return false;
    return m_awayUntil.hasExpired() || (m_unsettledUntil.hasExpired() && serverLives());
}

bool PpsServedChannel::serverLives() const
{
    struct stat status;
    UniqueFd probe;
    if (::stat(m_file.constData(), &status) < 0 || !(FileIdentity(status) == m_server))
        return false;
    const int error = LocalSocket::connect(m_file, Wait::No, &probe);
    return error == 0 || error == EAGAIN;
}

void PpsServedChannel::giveUp()
{
    m_link = Link::Gone;
    if (!m_kept.empty())
        qCWarning(logSupport) << m_path.device << "lost messages that no service took:" << m_kept.size();
    m_kept.clear();
    m_keptSize = 0;
    m_lossUntold = m_mode & PpsOpenMode::Subscribe;
    if (m_context && m_lossUntold)
        tellLater();
}

void PpsServedChannel::stopWaiting()
{
    m_waiting.reset();
    if (m_watched)
        m_watcher->unwatch(std::exchange(m_watched, nullptr), this);
    m_watcher.reset();
}

void PpsServedChannel::tellLater()
{
    const auto tell = [this] {
        if (m_lossUntold && m_announces)
            m_owner->messageWaits();
    };
    QMetaObject::invokeMethod(m_context.get(), tell, Qt::QueuedConnection);
}

int PpsServedChannel::send(const QByteArray &message)
{
    int error = sendKept();
    if (!error)
        error = LocalSocket::send(m_socket.get(), message, m_blocking ? Wait::Yes : Wait::No);
    if (!error && (m_mode & PpsOpenMode::Subscribe))
        ++m_owed;
    return error;
}

int PpsServedChannel::keep(const QByteArray &message)
{
    if (m_kept.size() >= MostKept || m_keptSize + message.size() > MostKeptBytes)
        return EAGAIN;
    m_kept.push_back(message);
    m_keptSize += message.size();
    return 0;
}

int PpsServedChannel::sendKept()
{
    for (; !m_kept.empty(); m_kept.pop_front()) {
        if (const int error = LocalSocket::send(m_socket.get(), m_kept.front(), Wait::No))
            return error;
        if (m_mode & PpsOpenMode::Subscribe)
            ++m_owed;
        m_keptSize -= m_kept.front().size();
    }
    return 0;
}

void PpsServedChannel::fileChanged()
{
    // Connecting ends the watch, which would disturb who tells of the change.
    m_watcher->scheduleAnnounce(this);
}

void PpsServedChannel::announce()
{
    const Lock lock(m_mutex);
    (void)tryReturn();
}

} // namespace oz
