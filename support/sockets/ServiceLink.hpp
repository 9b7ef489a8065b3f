#pragma once

#include "base/UniqueFd.hpp"
#include "files/FileIdentity.hpp"
#include "sockets/LocalSocket.hpp"

#include <oz/GrowingPause.hpp>

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>
#include <optional>

namespace oz {

/*!
 * A client's link to the service behind a socket file. It outlives the service: after a loss, the link waits
 * for another service at the path, in silence for the grace time. A service that lives and has ended the
 * connection is not asked again. The owner keeps the sockets, and guards the link where several threads use
 * it.
 */
class ServiceLink
{
public:
    enum class State {
        Up,
        Away, //!< within the grace time, or until it is known that the service lives
        Gone, //!< for the user too, though another service is still welcome
    };

    /*! For the service at \a file, with sockets of the type \a type. It is Gone until it is established. */
    ServiceLink(const QByteArray &file, int type) : m_file(file), m_type(type) { }

    [[nodiscard]] const QByteArray &file() const { return m_file; }
    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isUp() const { return m_state == State::Up; }
    [[nodiscard]] bool isAway() const { return m_state == State::Away; }

    /*! Connects to the service that lies at the path; 0 or an errno. */
    [[nodiscard]] int connect(LocalSocket::Wait wait, UniqueFd *socket);
    /*! As above, without waiting, but only to another service than the last one; ENOENT if there is none. */
    [[nodiscard]] int connectToNext(UniqueFd *socket);
    /*! The owner uses the socket that was connected last: the link is Up. */
    void establish();
    /*! The connection has ended: the link is Away. */
    void lose();
    /*! Makes a link that is Away Gone once the grace time is over, or the service is known to live; whether
     * that happened now. */
    [[nodiscard]] bool giveUpIfLost();
    /*! Makes the link Gone at once. */
    void giveUp() { m_state = State::Gone; }

    /*! The times at which giveUpIfLost() has to be called. */
    [[nodiscard]] std::array<QDeadlineTimer, 2> judgements() const { return {m_unsettledUntil, m_awayUntil}; }
    /*! The next of them. */
    [[nodiscard]] QDeadlineTimer nextJudgement() const;

private:
    [[nodiscard]] bool serviceLives() const;

    QByteArray m_file;
    int m_type;
    State m_state = State::Gone;
    FileIdentity m_service; // the socket file that the link was established with
    FileIdentity m_candidate; // the one that was connected to last
    QDeadlineTimer m_unsettledUntil;
    QDeadlineTimer m_awayUntil;
};

/*! The pauses between attempts to connect to a service that is at the path and does not accept yet. */
class ServiceRetry
{
public:
    /*! How long to wait after an attempt that failed with \a error; nothing if only a change at the path can
     * help. */
    [[nodiscard]] std::optional<std::chrono::milliseconds> pauseAfter(int error);
    /*! Another file is at the path. */
    void reset() { m_pause.reset(); }

private:
    GrowingPause<> m_pause{std::chrono::milliseconds(10), std::chrono::seconds(1)};
};

/*!
 * The wait for another service in the event loop of the calling thread: has its owner look for one at first,
 * after each change at the path and after a growing pause where one does not accept yet, and judge the link
 * when its times are over. The owner watches the path.
 */
class ServiceReturn final : public QObject
{
    Q_OBJECT

public:
    class Owner
    {
    public:
        virtual ~Owner() = default;
        /*! Tries ServiceLink::connectToNext(); 0 or the errno. After success it may destroy the wait. */
        [[nodiscard]] virtual int lookForService() = 0;
        /*! Calls ServiceLink::giveUpIfLost(). */
        virtual void judgeLoss() = 0;
    };

    ServiceReturn(const ServiceLink &link, Owner *owner);

    /*! Looks at once: the file at the path has changed. */
    void onPathChanged();

private:
    void look();

    Owner *const m_owner;
    ServiceRetry m_retry;
    QTimer m_again;
};

} // namespace oz
