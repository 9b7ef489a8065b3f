#pragma once

#include "sockets/LocalSocket.hpp"

#include <oz/ServiceClient.hpp>

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QSocketNotifier>

#include <map>
#include <memory>
#include <sys/types.h>

namespace oz {

/*!
 * Listens on a local socket and keeps its clients: what the servers of messages and of lines have in common.
 * It is the context of its connections, so that nothing reaches it once it is gone.
 *
 * No user can keep it from the others. Users have turns, see Turns. Each has a limited number of connections,
 * of which the one that was idle for longest gives way to a new one. Where all places are taken, the user
 * with the most connections gives way, even connections with something under way. Some descriptors of the
 * process are left to the service's own work.
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
    /*! The client has something under way, and does not give way to another of its user's, until release()
     * was called as often. */
    void hold(quint64 id);
    void release(quint64 id);
    /*! Receives and passes on what the client \a id sent, until \a end; to be called by Turns. */
    void serve(quint64 id, const QDeadlineTimer &end);

protected:
    struct Connection
    {
        Client client;
        UniqueFd socket;
        std::unique_ptr<QSocketNotifier> notifier; // off while the client waits for its turn
        int holds = 0;
        quint64 lastTurn = 0; // the connection that was accepted or served last has the largest
    };

    /*! The connection of \a id; none where it has ended. */
    [[nodiscard]] Connection *find(quint64 id);

    /*! A connection has been accepted, after which the server may be gone. */
    virtual void connected(Connection & /*connection*/) { }
    /*! Receives one message from a connection and passes it on, after which the server may be gone; 0, EAGAIN
     * where nothing is there, or an errno that ends the connection. */
    virtual int receive(Connection &connection) = 0;
    /*! True while something that was received has not been passed on. */
    [[nodiscard]] virtual bool hasMore(quint64 /*id*/) const { return false; }
    virtual void disconnected(const Client &client) = 0;

private:
    void acceptClients();
    [[nodiscard]] bool acceptClient();
    void acceptLater();
    [[nodiscard]] bool makeRoomFor(uid_t uid);
    enum class Among { Idle, All };
    /*! The connection of the user that was served least recently; none where there is none. */
    [[nodiscard]] const Connection *leastRecentOf(uid_t uid, Among among) const;
    void onReadable(quint64 id);

    QByteArray m_file;
    ino_t m_inode = 0;
    UniqueFd m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<quint64, Connection> m_connections;
    std::map<uid_t, int> m_users; // how many connections each has
    quint64 m_lastId = 0;
    quint64 m_lastTurn = 0;
};

} // namespace oz
