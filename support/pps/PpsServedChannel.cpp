#include "pps/PpsServedChannel.hpp"

#include "base/Log.hpp"
#include "pps/PpsWatcher.hpp"

#include <oz/PpsText.hpp>

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <QThread>

#include <cerrno>
#include <fcntl.h>

namespace oz {

namespace {

constexpr qsizetype MostKeptBytes = 64 * 1024;
constexpr std::size_t MostKept = 64;

// Has a watcher stop waiting when the file changes, and does nothing else.
class Waker final : public FileSubscriber
{
    void fileChanged() override { }
};

} // namespace

using LocalSocket::Wait;

bool KeptMessages::add(const QByteArray &message)
{
    if (m_messages.size() >= MostKept || m_size + message.size() > MostKeptBytes)
        return false;
    m_messages.push_back(message);
    m_size += message.size();
    return true;
}

void KeptMessages::removeFirst()
{
    m_size -= m_messages.front().size();
    m_messages.pop_front();
}

std::size_t KeptMessages::clear()
{
    m_size = 0;
    return std::exchange(m_messages, {}).size();
}

// Waits for another service in the event loop.
class PpsServedChannel::Waiting final : private FileSubscriber
{
public:
    explicit Waiting(PpsServedChannel *channel)
        : m_return(channel->m_link, channel), m_watched(m_watcher->watch(channel->m_link.file(), this))
    {
    }
    ~Waiting() override { m_watcher->unwatch(m_watched, this); }

private:
    // Connecting ends the watch, which must not happen while the watcher tells its subscribers.
    void fileChanged() override { m_watcher->scheduleAnnounce(this); }
    void announce() override { m_return.onPathChanged(); }

    ServiceReturn m_return;
    const std::shared_ptr<PpsWatcher> m_watcher = PpsWatcher::forThisThread();
    WatchedFile *const m_watched;
};

PpsServedChannel::PpsServedChannel(
    const PpsPath &path, PpsOpenMode::Types mode, bool blocking, PpsChannelOwner *owner)
    : m_path(path), m_mode(mode), m_blocking(blocking), m_owner(owner),
      m_link(path.filePath(), SOCK_SEQPACKET)
{
}

PpsServedChannel::~PpsServedChannel()
{
    PpsServedChannel::detach();
}

int PpsServedChannel::connect()
{
    UniqueFd socket;
    const int error = m_link.connect(m_blocking ? Wait::Yes : Wait::No, &socket);
    if (!error)
        use(std::move(socket));
    return error;
}

void PpsServedChannel::use(UniqueFd socket)
{
    if (m_blocking)
        ::fcntl(socket.get(), F_SETFL, 0);
    m_socket = std::move(socket);
    m_link.establish();
}

int PpsServedChannel::read(QByteArray *message)
{
    Lock lock(m_mutex);
    for (;;) {
        // A read that finds the connection ended while nothing is owed to it has lost nothing.
        if (m_link.isUp() && m_blocking && LocalSocket::hasEnded(m_socket.get()))
            lose();
        if (std::exchange(m_lossUntold, false))
            return ECONNRESET;
        if (tryReturn() != 0 && m_link.isAway()) {
            if (!m_blocking)
                return EAGAIN;
            waitForReturn(&lock);
        }
        if (!m_link.isUp()) {
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
    if (m_link.isUp()) {
        const int error = send(message);
        if (error != EPIPE)
            return error;
        // Messages that the service has sent are read before the loss counts, from the event loop.
        if (!isAtHome() || !LocalSocket::hasEnded(m_socket.get())) {
            if (isAtHome() && mayWait())
                return error;
            return m_kept.add(message) ? 0 : EAGAIN;
        }
        lose();
    }
    if (isAtHome()) {
        if (mayWait() && std::exchange(m_lossUntold, false))
            return EPIPE;
        if (tryReturn() != 0 && m_link.isAway() && m_blocking)
            waitForReturn(&lock);
        if (m_link.isUp())
            return send(message);
    }
    if (m_link.isAway())
        return m_kept.add(message) ? 0 : EAGAIN;
    m_lossUntold = m_lossUntold && !mayWait();
    return EPIPE;
}

bool PpsServedChannel::isAtHome() const
{
    return !m_context || m_context->thread() == QThread::currentThread();
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
    if (m_link.isUp())
        follow();
    else
        awaitReturn();
}

void PpsServedChannel::detach()
{
    const Lock lock(m_mutex);
    m_notifier.reset();
    m_waiting.reset();
    m_context.reset();
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
    m_link.lose();
    m_lossUntold = m_lossUntold || m_owed > 0;
    m_owed = 0;
    if (!m_context)
        return;
    if (m_lossUntold)
        tellLater();
    awaitReturn();
}

void PpsServedChannel::awaitReturn()
{
    m_waiting = std::make_unique<Waiting>(this);
    (void)tryReturn();
}

void PpsServedChannel::waitForReturn(Lock *lock)
{
    const auto watcher = PpsWatcher::forThisThread();
    Waker waker;
    WatchedFile *const watched = watcher->watch(m_link.file(), &waker);
    ServiceRetry retry;
    for (int error = tryReturn(); error != 0; error = tryReturn()) {
        judge();
        if (!m_link.isAway())
            break;
        const auto pause = retry.pauseAfter(error);
        const QDeadlineTimer judgement = m_link.nextJudgement();
        const QDeadlineTimer end = pause ? std::min(judgement, QDeadlineTimer(*pause)) : judgement;
        lock->unlock();
        (void)watcher->wait(end);
        lock->lock();
    }
    watcher->unwatch(watched, &waker);
}

int PpsServedChannel::tryReturn()
{
    if (m_link.isUp())
        return 0;
    if (!m_context)
        judge();
    UniqueFd socket;
    if (const int error = m_link.connectToNext(&socket))
        return error;
    use(std::move(socket));
    m_waiting.reset();
    (void)sendKept();
    if (m_context) {
        follow();
        QMetaObject::invokeMethod(
            m_context.get(), [this] { m_owner->serviceReturned(); }, Qt::QueuedConnection);
    }
    return 0;
}

void PpsServedChannel::judge()
{
    if (!m_link.giveUpIfLost())
        return;
    if (const std::size_t count = m_kept.clear(); count > 0)
        qCWarning(logSupport) << m_path.device << "lost messages that no service took:" << count;
    m_lossUntold = m_mode & PpsOpenMode::Subscribe;
    if (m_context && m_lossUntold)
        tellLater();
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

int PpsServedChannel::sendKept()
{
    for (; !m_kept.isEmpty(); m_kept.removeFirst()) {
        if (const int error = LocalSocket::send(m_socket.get(), m_kept.first(), Wait::No))
            return error;
        if (m_mode & PpsOpenMode::Subscribe)
            ++m_owed;
    }
    return 0;
}

int PpsServedChannel::lookForService()
{
    const Lock lock(m_mutex);
    return tryReturn();
}

void PpsServedChannel::judgeLoss()
{
    const Lock lock(m_mutex);
    judge();
}

} // namespace oz
