#include <oz/DeviceServer.hpp>

#include "base/LastError.hpp"
#include "base/UserWarnings.hpp"
#include "sockets/SocketServer.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFile>

#include <cerrno>
#include <optional>
#include <poll.h>

namespace oz {

class DeviceServerPrivate final : public SocketServer
{
public:
    DeviceServerPrivate(DeviceServer *server, const QString &path) : q(server), m_path(path) { }

    int listenAtPath(mode_t mode)
    {
        if (!m_path.startsWith(u'/'))
            return EINVAL;
        return listen(QFile::encodeName(devicePath(m_path)), SOCK_STREAM, mode);
    }

    bool send(quint64 id, const QByteArray &line)
    {
        Connection *connection = find(id);
        if (!connection)
            return error.done(ENOTCONN);
        Lines &lines = m_lines[id];
        if (unread) {
            lines.output += line + '\n';
            flush(*connection, lines);
            // Later, as whoever sends does not expect to hear of the end meanwhile.
            if (lines.output.size() > *unread)
                QMetaObject::invokeMethod(
                    this, [this, id] { drop(id); }, Qt::QueuedConnection);
            return error.done(0);
        }
        // The rest of a line that the socket has taken in part has to follow; others that wait are outdated.
        lines.output.truncate(lines.midLine ? lines.output.indexOf('\n') + 1 : 0);
        lines.output += line + '\n';
        flush(*connection, lines);
        return error.done(0);
    }

    [[nodiscard]] QString path() const { return m_path; }

    LastError error;
    qsizetype longestLine = DeviceServer::MaxLineSize;
    std::optional<qsizetype> unread; // how much a client may leave where every line counts

private:
    // The state of one client's connection.
    struct Lines
    {
        QByteArray input; // the beginning of an incomplete line
        QByteArray output; // bytes that the socket has not taken yet
        bool midLine = false; // the socket has taken a part of the line that output begins with
        std::unique_ptr<QSocketNotifier> writable;
    };

    // The smallest buffer that the kernel grants: what waits there is outdated when the client reads it.
    void connected(Connection &connection) override
    {
        if (const int least = 1; !unread)
            ::setsockopt(connection.socket.get(), SOL_SOCKET, SO_SNDBUF, &least, sizeof least);
        const Client client = connection.client;
        Q_EMIT q->connected(client);
    }

    // One line; several may come with one call.
    int receive(Connection &connection) override
    {
        const Client client = connection.client;
        Lines &lines = m_lines[client.id];
        if (!lines.input.contains('\n')) {
            char chunk[DeviceServer::MaxLineSize];
            const ssize_t size = ::recv(connection.socket.get(), chunk, sizeof chunk, MSG_DONTWAIT);
            if (size <= 0)
                return size < 0 ? errno : ECONNRESET;
            lines.input.append(chunk, size);
        }
        const qsizetype end = lines.input.indexOf('\n');
        if ((end < 0 ? lines.input.size() : end) > longestLine) {
            // The end of a conversation is news, unlike that of somebody who asks for a status.
            if (unread) {
                UserWarnings::ofThisThread().warn(
                    client.uid, QLatin1String("has written too long a line to ") + m_path);
            }
            return EMSGSIZE;
        }
        if (end < 0)
            return 0;
        const QByteArray line = lines.input.first(end);
        lines.input.remove(0, end + 1);
        Q_EMIT q->received(client, line);
        return 0;
    }

    [[nodiscard]] bool hasMore(quint64 id) const override
    {
        const auto lines = m_lines.find(id);
        return lines != m_lines.end() && lines->second.input.contains('\n');
    }

    // A client that has gone is noticed by reading from it.
    void flush(Connection &connection, Lines &lines)
    {
        // A socket counts as writable while most of its buffer is free, but takes more than that.
        pollfd socket{connection.socket.get(), POLLOUT, 0};
        const ssize_t size = ::poll(&socket, 1, 0) == 1 ? ::send(socket.fd, lines.output.constData(),
                                 std::size_t(lines.output.size()), MSG_DONTWAIT | MSG_NOSIGNAL)
                                                        : 0;
        if (size > 0) {
            lines.midLine = lines.output.at(size - 1) != '\n';
            lines.output.remove(0, size);
        }
        if (lines.output.isEmpty()) {
            lines.writable.reset();
        } else if (!lines.writable) {
            lines.writable =
                std::make_unique<QSocketNotifier>(connection.socket.get(), QSocketNotifier::Write);
            const auto goOn = [this, id = connection.client.id] {
                if (Connection *writable = find(id))
                    flush(*writable, m_lines[id]);
            };
            // The notifier may end in its own slot.
            connect(lines.writable.get(), &QSocketNotifier::activated, this, goOn, Qt::QueuedConnection);
        }
    }

    void disconnected(const Client &client) override
    {
        m_lines.erase(client.id);
        Q_EMIT q->disconnected(client);
    }

    DeviceServer *q;
    QString m_path;
    std::map<quint64, Lines> m_lines;
};

DeviceServer::DeviceServer(const QString &path, QObject *parent)
    : QObject(parent), d(std::make_unique<DeviceServerPrivate>(this, path))
{
}

DeviceServer::~DeviceServer() = default;

QString DeviceServer::path() const
{
    return d->path();
}

bool DeviceServer::listen(mode_t mode)
{
    return d->error.done(d->listenAtPath(mode));
}

bool DeviceServer::isListening() const
{
    return d->isListening();
}

void DeviceServer::keepEveryLine(qsizetype longest, qsizetype unread)
{
    d->longestLine = longest;
    d->unread = unread;
}

bool DeviceServer::send(quint64 client, const QByteArray &line)
{
    return d->send(client, line);
}

void DeviceServer::disconnectClient(quint64 client)
{
    d->drop(client);
}

void DeviceServer::hold(quint64 client)
{
    d->hold(client);
}

void DeviceServer::release(quint64 client)
{
    d->release(client);
}

int DeviceServer::error() const
{
    return d->error.code();
}

QString DeviceServer::errorString() const
{
    return d->error.text();
}

} // namespace oz
