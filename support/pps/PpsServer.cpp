#include <oz/PpsServer.hpp>

#include "base/LastError.hpp"
#include "base/UserWarnings.hpp"
#include "pps/PpsPath.hpp"
#include "sockets/SocketServer.hpp"

#include <oz/Limits.hpp>
#include <oz/PpsText.hpp>

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

namespace oz {

class PpsServerPrivate final : public SocketServer
{
public:
    PpsServerPrivate(PpsServer *server, const QString &objectPath)
        : q(server), path(objectPath), parsed(PpsPath::parse(objectPath))
    {
    }

    int listenAtPath(mode_t mode)
    {
        if (!parsed || path.contains(u'?'))
            return EINVAL;
        return listen(parsed->filePath(), SOCK_SEQPACKET, mode);
    }

    bool send(quint64 id, const QByteArray &message)
    {
        const Connection *connection = find(id);
        if (!connection)
            return error.done(ENOTCONN);
        const bool sent =
            error.done(LocalSocket::send(connection->socket.get(), message, LocalSocket::Wait::No));
        if (error.code() == EAGAIN)
            drop(id); // whose slots may destroy all this
        return sent;
    }

    PpsServer *q;
    QString path;
    std::optional<PpsPath> parsed;
    qsizetype limit = MaxMessageSize;
    LastError error;

private:
    void connected(Connection &connection) override
    {
        const Client client = connection.client;
        Q_EMIT q->connected(client);
    }

    int receive(Connection &connection) override
    {
        QByteArray message;
        const int failure =
            LocalSocket::receive(connection.socket.get(), &message, LocalSocket::Wait::No, limit);
        const Client client = connection.client;
        if (failure == EMSGSIZE) {
            Q_EMIT q->refused(client, message);
            return 0;
        }
        if (failure)
            return failure;
        Q_EMIT q->received(client, message);
        return 0;
    }

    void disconnected(const Client &client) override { Q_EMIT q->disconnected(client); }
};

PpsServer::PpsServer(const QString &path, QObject *parent)
    : QObject(parent), d(std::make_unique<PpsServerPrivate>(this, path))
{
}

PpsServer::~PpsServer() = default;

QString PpsServer::path() const
{
    return d->path;
}

void PpsServer::setMessageLimit(qsizetype bytes)
{
    d->limit = std::clamp<qsizetype>(bytes, 1, MaxMessageSize);
}

bool PpsServer::listen(mode_t mode)
{
    return d->error.done(d->listenAtPath(mode));
}

bool PpsServer::isListening() const
{
    return d->isListening();
}

bool PpsServer::send(quint64 client, const QByteArray &message)
{
    return d->send(client, message);
}

bool PpsServer::send(quint64 client, const QVariantMap &attributes)
{
    QString problem;
    const QByteArray message = PpsText::encodeObject(
        QString::fromUtf8(d->parsed ? d->parsed->name : QByteArray()), attributes, &problem);
    return problem.isEmpty() ? d->send(client, message) : d->error.done(EINVAL, problem);
}

void PpsServer::disconnectClient(quint64 client)
{
    d->drop(client);
}

void PpsServer::hold(quint64 client)
{
    d->hold(client);
}

void PpsServer::release(quint64 client)
{
    d->release(client);
}

void PpsServer::warnAbout(const Client &client, const QString &text)
{
    UserWarnings::ofThisThread().warn(client.uid, text);
}

int PpsServer::clientCount() const
{
    return d->clientCount();
}

int PpsServer::error() const
{
    return d->error.code();
}

QString PpsServer::errorString() const
{
    return d->error.text();
}

} // namespace oz
