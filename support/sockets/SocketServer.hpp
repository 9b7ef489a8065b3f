#pragma once

#include "sockets/LocalSocket.hpp"

#include <oz/ServiceClient.hpp>

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <deque>
#include <map>
#include <memory>
#include <sys/types.h>

namespace oz {

/*!
 * Listens on a local socket and keeps its clients: what the servers of messages and of lines have in common.
 * It is the context of its connections, so that nothing reaches it once it is gone.
 *
 * No user can keep it from the others: users have their turns one after the other, however many connections
 * and messages they have; each has a limited number of connections, where the oldest that has nothing under
 * way gives way to a new one; and some descriptors of the process are left to the service's own work.
 */
class SocketServer : public QObject
{
public:
    using Client = ServiceClient;

    /*! Ends all connections; what it listened on is gone. */
    ~SocketServer() override;

    /*! Listens at the file \a path; 0 or an errno. */
    [[nodiscard]] int listen(const QByteArray &path, int type, mode_t mode);
    [[nodiscard]] bool isListening() const { return m_notifier != nullptr; }
    [[nodiscard]] int clientCount() const { return int(m_connections.size()); }
    /*! Ends the connection of \a id; this may be the end of the server too. */
    void drop(quint64 id);
    /*! The client has something under way, and gives way to nobody, until release() was called as often. */
    void hold(quint64 id);
    void release(quint64 id);

protected:
    struct Connection
    {
        Client client;
        UniqueFd socket;
        std::unique_ptr<QSocketNotifier> notifier; // off while the client waits for its turn
        int holds = 0;
        quint64 lastTurn = 0; // what was accepted or received last has the largest
    };

    /*! The connection of \a id; none where it has ended. */
    [[nodiscard]] Connection *find(quint64 id);

    /*! A connection has been accepted, after which the server may be gone. */
    virtual void connected(Connection & /*connection*/) { }
    /*! Receives something from a connection and passes it on, after which the server may be gone; 0, EAGAIN
     * where nothing is there, or an errno that ends the connection. */
    virtual int receive(Connection &connection) = 0;
    virtual void disconnected(const Client &client) = 0;

private:
    // What the clients of one user have.
    struct User
    {
        int connections = 0;
        std::deque<quint64> waiting; // for their turns, each once
        bool hadTurn = false; // since the event loop last looked who has come
        bool wasTold = false; // of too many connections
    };

    void acceptClients();
    [[nodiscard]] bool acceptClient();
    void acceptLater();
    [[nodiscard]] bool makeRoomFor(uid_t uid);
    [[nodiscard]] bool dropIdleClientOf(uid_t uid);
    void onReadable(quint64 id);
    void serveTurns();
    void serve(quint64 id);

    QByteArray m_file;
    ino_t m_inode = 0;
    UniqueFd m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<quint64, Connection> m_connections;
    std::map<uid_t, User> m_users;
    uid_t m_lastServed = 0;
    QTimer m_turns;
    quint64 m_lastId = 0;
    quint64 m_lastTurn = 0;
};

} // namespace oz
