#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsChannel.hpp"
#include "sockets/ServiceLink.hpp"

#include <deque>
#include <mutex>

class QSocketNotifier;

namespace oz {

/*!
 * Messages for a service that is away, which it gets when it is back. They fit the queue of a fresh socket.
 */
class KeptMessages
{
public:
    /*! False where there is no room for \a message. */
    [[nodiscard]] bool add(const QByteArray &message);
    [[nodiscard]] bool isEmpty() const { return m_messages.empty(); }
    [[nodiscard]] const QByteArray &first() const { return m_messages.front(); }
    void removeFirst();
    /*! Drops all of them; how many there were. */
    std::size_t clear();

private:
    std::deque<QByteArray> m_messages;
    qsizetype m_size = 0; // bytes in all
};

/*!
 * A socket on which a service answers. The connection comes back by itself when the service does, see
 * ServiceLink.
 */
class PpsServedChannel final : public PpsChannel, private ServiceReturn::Owner
{
public:
    PpsServedChannel(const PpsPath &path, PpsOpenMode::Types mode, bool blocking, PpsChannelOwner *owner);
    ~PpsServedChannel() override;

    [[nodiscard]] int connect();
    [[nodiscard]] int read(QByteArray *message) override;
    /*! May be called from any thread, once attach() was. */
    [[nodiscard]] int write(const QByteArray &message) override;
    void attach(bool announces) override;
    void detach() override;

private:
    class Waiting;
    using Lock = std::unique_lock<std::mutex>;

    // On the channel's own thread, with m_mutex held.
    void use(UniqueFd socket);
    void follow();
    void lose();
    void awaitReturn();
    void waitForReturn(Lock *lock);
    [[nodiscard]] int tryReturn();
    void judge();
    void tellLater();

    // Everywhere, with m_mutex held.
    [[nodiscard]] bool mayWait() const { return m_blocking || !m_context; }
    [[nodiscard]] bool isAtHome() const;
    [[nodiscard]] int send(const QByteArray &message);
    [[nodiscard]] int sendKept();

    // From the event loop.
    void onActivated();
    int lookForService() override;
    void judgeLoss() override;

    const PpsPath m_path;
    const PpsOpenMode::Types m_mode;
    const bool m_blocking;
    PpsChannelOwner *const m_owner;
    bool m_announces = false;

    std::mutex m_mutex; // guards all below against writes from other threads
    ServiceLink m_link;
    UniqueFd m_socket;
    qsizetype m_owed = 0; // answers, to one that reads them
    bool m_lossUntold = false; // to one that waits for answers
    KeptMessages m_kept;
    std::unique_ptr<QObject> m_context; // lives in the event loop that is used; none without one
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<Waiting> m_waiting; // only with an event loop, while the service is away
};

} // namespace oz
