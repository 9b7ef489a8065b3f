#pragma once

#include <oz/OzSupportGlobal.hpp>
#include <oz/ServiceClient.hpp>

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <sys/types.h>

namespace oz {

class PpsServerPrivate;

/*!
 * Serves one control object of the tree, as the service behind it: each client that opens the object is a
 * connection of its own, whose messages arrive in order, and which alone hears what is sent to it.
 *
 * Clients cannot harm it. A message over the limit is not taken in, and refused() tells of it. A client that
 * leaves so many answers unread that its queue is full loses its connection. The users of all servers of a
 * thread have turns of a millisecond each, one after the other, however many clients and messages they have;
 * so the limit for messages also limits how long one user waits for another. A user has at most 500 clients,
 * and all have 1,000. Beyond that, and where the process has few descriptors left, the client of the user
 * with the most clients that was idle for longest gives way to the new one; if all its clients have something
 * under way, one of these does, unless the new client's user has as many. Otherwise the new one is refused.
 * The log tells it once a minute.
 *
 * An instance belongs to the thread that it lives on, which needs an event loop.
 */
class OZ_SUPPORT_EXPORT PpsServer : public QObject
{
    Q_OBJECT

public:
    /*! A connected client. The ids of a server are never used twice. */
    using Client = ServiceClient;

    /*! Binds to the device path \a path ("/pps/...", without options). */
    explicit PpsServer(const QString &path, QObject *parent = nullptr);
    /*! Ends all connections; the object is gone from the tree. */
    ~PpsServer() override;

    /*! The device path, as given. */
    [[nodiscard]] QString path() const;

    /*! How many bytes a client's message may have: at first MaxMessageSize, which is the most. */
    void setMessageLimit(qsizetype bytes);

    /*!
     * Puts the object into the tree, with the file mode \a mode (who may write may connect); the directories
     * are made, and what a dead service left there is replaced. False on failure, with the errno in error():
     * EADDRINUSE where a living service has it, EEXIST where the path is taken by a state object, EINVAL for
     * no path.
     */
    bool listen(mode_t mode = 0666);
    /*! True while the object is in the tree. */
    [[nodiscard]] bool isListening() const;

    /*! Sends \a message to the client; false where it is not connected any more, or does not read. */
    bool send(quint64 client, const QByteArray &message);
    /*! Encodes and sends \a attributes, headed by the object's name; false also where they have no text form.
     */
    bool send(quint64 client, const QVariantMap &attributes);
    /*! Ends the connection. What was sent before still arrives. */
    void disconnectClient(quint64 client);
    /*! The client has something under way, so its connection gives way to none of its user's, until release()
     * was called as often. */
    void hold(quint64 client);
    /*! See hold(). */
    void release(quint64 client);
    /*! Logs "user UID \a text", for something that \a client did, at most once a minute for each user and
     * text. */
    static void warnAbout(const Client &client, const QString &text);
    /*! How many clients are connected. */
    [[nodiscard]] int clientCount() const;

    /*! The errno of the last failure; 0 where there was none. */
    [[nodiscard]] int error() const;
    /*! error() as text; empty for 0. */
    [[nodiscard]] QString errorString() const;

Q_SIGNALS:
    /*! A client has connected. */
    void connected(const oz::PpsServer::Client &client);
    /*! A client has written \a message, whole and as it stands. */
    void received(const oz::PpsServer::Client &client, const QByteArray &message);
    /*! A client has written a message over the limit, of which \a beginning is left. */
    void refused(const oz::PpsServer::Client &client, const QByteArray &beginning);
    /*! The client is gone, whoever ended the connection. */
    void disconnected(const oz::PpsServer::Client &client);

private:
    friend class PpsServerPrivate;
    std::unique_ptr<PpsServerPrivate> d;
};

} // namespace oz
