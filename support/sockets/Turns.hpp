#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <map>
#include <sys/types.h>

namespace oz {

class SocketServer;

/*!
 * Divides the time of a thread among the users of its servers. Each user has a turn of about a millisecond,
 * one user after the other, whatever number of servers, connections and messages they have. A turn ends after
 * the message during which its time runs out, so servers limit the size of a message.
 */
class Turns : public QObject
{
public:
    /*! The turns of the calling thread. */
    [[nodiscard]] static Turns &ofThisThread();

    /*! Begins a turn for \a user at once; false if something of that user waits, or the user has had a turn
     * since the event loop last looked for input. */
    [[nodiscard]] bool begin(uid_t user);
    /*! Has the client \a id of \a server served when it is the user's turn. */
    void queue(SocketServer *server, uid_t user, quint64 id);
    /*! When a turn that begins now ends. */
    [[nodiscard]] static QDeadlineTimer end();

private:
    struct Waiting
    {
        QPointer<SocketServer> server;
        quint64 id;
    };
    struct User
    {
        std::deque<Waiting> waiting;
        bool hadTurn = false;
    };

    Turns();
    void onEventLoopAwake();
    void serveAll();
    void serveTurnOf(uid_t uid);

    std::map<uid_t, User> m_users; // users that wait, or have had a turn
    QTimer m_next;
};

} // namespace oz
