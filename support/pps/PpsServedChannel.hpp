#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsChannel.hpp"
#include "pps/PpsWatcher.hpp"
#include "sockets/LocalSocket.hpp"

#include <deque>
#include <mutex>

class QSocketNotifier;
class QThread;

namespace oz {

/*!
 * A socket on which a service answers. The connection comes back by itself when the service does: where the
 * service is gone, the channel waits for another socket at its path, in silence for the grace time. A service
 * that lives and has ended the connection is not asked again.
 */
class PpsServedChannel final : public PpsChannel, private FileSubscriber
{
public:
    PpsServedChannel(const PpsPath &path, PpsOpenMode::Types mode, bool blocking, PpsChannelOwner *owner);
    ~PpsServedChannel() override;

    [[nodiscard]] int connect(LocalSocket::Wait wait);
    [[nodiscard]] int read(QByteArray *message) override;
    /*! May be called from any thread, once attach() was. */
    [[nodiscard]] int write(const QByteArray &message) override;
    void attach(bool announces) override;
    void detach() override;

private:
    using Lock = std::unique_lock<std::mutex>;
    enum class Link {
        Up,
        Away, //!< within the grace time, or until it is known that the service lives
        Gone,
    };

    // On the channel's own thread, with m_mutex held.
    void follow();
    void lose();
    void awaitReturn();
    [[nodiscard]] bool waitForReturn(Lock *lock);
    [[nodiscard]] bool tryReturn();
    [[nodiscard]] bool isLost() const;
    [[nodiscard]] bool serverLives() const;
    void giveUp();
    void stopWaiting();
    void tellLater();

    // Everywhere, with m_mutex held.
    [[nodiscard]] int send(const QByteArray &message);
    [[nodiscard]] int keep(const QByteArray &message);
    [[nodiscard]] int sendKept();

    // From the event loop.
    void onActivated();
    void fileChanged() override;
    void announce() override;

    const PpsPath m_path;
    const QByteArray m_file;
    const PpsOpenMode::Types m_mode;
    const bool m_blocking;
    PpsChannelOwner *const m_owner;
    bool m_announces = false;

    std::mutex m_mutex; // for what a write from another thread looks at
    Link m_link = Link::Gone;
    UniqueFd m_socket;
    FileIdentity m_server; // the socket file at the last connecting
    qsizetype m_owed = 0; // answers, to one that reads them
    std::deque<QByteArray> m_kept; // for the service to come
    qsizetype m_keptSize = 0;
    std::unique_ptr<QObject> m_context; // of what happens in the event loop; none without one
    QThread *m_home = nullptr;

    bool m_lossUntold = false; // to one that waits for answers
    QDeadlineTimer m_awayUntil;
    QDeadlineTimer m_unsettledUntil;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<QObject> m_waiting; // context of the timers while the service is away
    std::shared_ptr<PpsWatcher> m_watcher;
    WatchedFile *m_watched = nullptr;
};

} // namespace oz
