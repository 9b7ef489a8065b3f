#pragma once

#include "sockets/LocalSocket.hpp"

#include <oz/ServiceClient.hpp>

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <map>
#include <memory>
#include <sys/types.h>

namespace oz {

/*!
 * Listens on a local socket and keeps its clients: what the servers of messages and of lines have in common.
 * It is the context of its connections, so that nothing reaches it once it is gone.
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

protected:
    struct Connection
    {
        Client client;
        UniqueFd socket;
        std::unique_ptr<QSocketNotifier> notifier;
    };

    /*! The connection of \a id; none where it has ended. */
    [[nodiscard]] Connection *find(quint64 id);

    /*! A connection has been accepted. */
    virtual void connected(Connection & /*connection*/) { }
    /*! Receives something from a connection and passes it on, after which the server may be gone; 0, EAGAIN
     * where nothing is there, or an errno that ends the connection. */
    virtual int receive(Connection &connection) = 0;
    virtual void disconnected(const Client &client) = 0;

private:
    void acceptClient();
    void receiveFrom(quint64 id);

    QByteArray m_file;
    ino_t m_inode = 0;
    UniqueFd m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<quint64, Connection> m_connections;
    quint64 m_lastId = 0;
};

} // namespace oz
