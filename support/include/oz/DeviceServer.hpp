#pragma once

#include <oz/OzSupportGlobal.hpp>
#include <oz/ServiceClient.hpp>

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>
#include <sys/types.h>

namespace oz {

class DeviceServerPrivate;

/*!
 * Provides one device of the platform that speaks in lines, as the service behind it: each client that opens
 * the device is a connection of its own.
 *
 * Clients cannot harm it: a line over 4 KiB ends that client's connection; one that does not read gets the
 * latest line once it does, after two former ones at most, without those between, unless keepEveryLine() says
 * otherwise. The limits and turns of users are those of PpsServer.
 *
 * An instance belongs to the thread that it lives on, which needs an event loop.
 */
class OZ_SUPPORT_EXPORT DeviceServer : public QObject
{
    Q_OBJECT

public:
    /*! A connected client; its ids are never used twice. */
    using Client = ServiceClient;

    /*! The longest line of a client, in bytes, unless keepEveryLine() sets another. */
    static constexpr int MaxLineSize = 4096;

    /*! Binds to the device path \a path ("/dev/..."). */
    explicit DeviceServer(const QString &path, QObject *parent = nullptr);
    /*! Ends all connections; the device is gone. */
    ~DeviceServer() override;

    /*! The device path, as given. */
    [[nodiscard]] QString path() const;

    /*! Provides the device with the file mode \a mode (who may write may open it). The errors are those of
     * PpsServer::listen(). */
    bool listen(mode_t mode = 0666);
    [[nodiscard]] bool isListening() const; //!< True while the device is there.

    /*!
     * Makes every line count: lines of clients may have \a longest bytes, and none that is sent is left out
     * for a newer one. The connection of a client that leaves more than \a unread bytes unread ends. To be
     * called before listen().
     */
    void keepEveryLine(qsizetype longest, qsizetype unread);

    /*! Sends \a line and a line feed; false where the client is not connected any more. */
    bool send(quint64 client, const QByteArray &line);
    /*! Ends the connection of \a client. */
    void disconnectClient(quint64 client);

    /*! As PpsServer::hold() and PpsServer::release(). */
    void hold(quint64 client);
    /*! See hold(). */
    void release(quint64 client);

    /*! The errno of the last failure; 0 where there was none. */
    [[nodiscard]] int error() const;
    /*! error() as text; empty for 0. */
    [[nodiscard]] QString errorString() const;

Q_SIGNALS:
    /*! A client has connected. */
    void connected(const oz::DeviceServer::Client &client);
    /*! A client has written \a line, which is without its line feed. */
    void received(const oz::DeviceServer::Client &client, const QByteArray &line);
    /*! The client is gone, whoever ended the connection. */
    void disconnected(const oz::DeviceServer::Client &client);

private:
    friend class DeviceServerPrivate;
    std::unique_ptr<DeviceServerPrivate> d;
};

} // namespace oz
