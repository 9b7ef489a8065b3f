#include <oz/PpsServer.hpp>

#include "PpsPath.hpp"
#include "SeqSocket.hpp"

#include <oz/PpsText.hpp>

#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <map>
#include <sys/socket.h>
#include <sys/stat.h>
#include <system_error>

namespace oz {

namespace {

constexpr std::size_t MaxClients = 1000;
constexpr int MessagesPerTurn = 16; // of one client, before the others have their turn
constexpr std::chrono::milliseconds AcceptRetryInterval(100);

struct Connection
{
    PpsServer::Client client;
    UniqueFd socket;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace

class PpsServerPrivate
{
public:
    PpsServerPrivate(PpsServer *server, const QString &objectPath)
        : q(server), path(objectPath), parsed(PpsPath::parse(objectPath))
    {
    }

    int listen(mode_t mode)
    {
        if (!parsed || path.contains(u'?'))
            return EINVAL;
        if (notifier)
            return EADDRINUSE;
        file = parsed->filePath();
        if (const int failure = SeqSocket::listen(file, mode, &socket))
            return failure;
        struct stat status;
        if (::lstat(file.constData(), &status) == 0)
            inode = status.st_ino;
        notifier = std::make_unique<QSocketNotifier>(socket.get(), QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, q, [this] { acceptClient(); });
        return 0;
    }

    void stop()
    {
        if (!notifier)
            return;
        notifier.reset();
        // Before any client hears of the end: one that then looks whether the object is there finds it gone.
        struct stat status;
        if (::lstat(file.constData(), &status) == 0 && status.st_ino == inode)
            ::unlink(file.constData());
        connections.clear();
    }

    void acceptClient()
    {
        UniqueFd accepted(::accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!accepted) {
            // Out of descriptors or memory: nothing tells when there is more, so it is tried from time to
            // time.
            if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
                notifier->setEnabled(false);
                const auto retry = [this] { notifier->setEnabled(connections.size() < MaxClients); };
                QTimer::singleShot(AcceptRetryInterval, notifier.get(), retry);
            }
            return;
        }
        ucred credentials{};
        socklen_t size = sizeof credentials;
        ::getsockopt(accepted.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
        const quint64 id = ++lastId;
        Connection &connection = connections[id];
        connection.client = {id, credentials.pid, credentials.uid, credentials.gid};
        connection.notifier = std::make_unique<QSocketNotifier>(accepted.get(), QSocketNotifier::Read);
        connection.socket = std::move(accepted);
        QObject::connect(
            connection.notifier.get(), &QSocketNotifier::activated, q, [this, id] { receiveFrom(id); });
        notifier->setEnabled(connections.size() < MaxClients);
    }

    void receiveFrom(quint64 id)
    {
        const QPointer<PpsServer> alive(q);
        for (int turn = 0; turn < MessagesPerTurn; ++turn) {
            const auto found = connections.find(id);
            if (found == connections.end())
                return;
            QByteArray message;
            const int failure = SeqSocket::receive(found->second.socket.get(), &message, SeqSocket::Wait::No);
            if (failure == EAGAIN)
                return;
            if (failure)
                return drop(id);
            const PpsServer::Client client = found->second.client;
            Q_EMIT q->received(client, message);
            if (!alive)
                return;
        }
    }

    void drop(quint64 id)
    {
        const auto found = connections.find(id);
        if (found == connections.end())
            return;
        const PpsServer::Client client = found->second.client;
        connections.erase(found);
        notifier->setEnabled(true);
        Q_EMIT q->disconnected(client);
    }

    bool send(quint64 id, const QByteArray &message)
    {
        const auto found = connections.find(id);
        if (found == connections.end())
            return done(ENOTCONN);
        const bool sent = done(SeqSocket::send(found->second.socket.get(), message, SeqSocket::Wait::No));
        if (error == EAGAIN)
            drop(id); // whose slots may destroy all this
        return sent;
    }

    bool done(int result)
    {
        error = result;
        return result == 0;
    }

    PpsServer *q;
    QString path;
    std::optional<PpsPath> parsed;
    QByteArray file;
    ino_t inode = 0;
    UniqueFd socket;
    std::unique_ptr<QSocketNotifier> notifier;
    std::map<quint64, Connection> connections;
    quint64 lastId = 0;
    int error = 0;
};

PpsServer::PpsServer(const QString &path, QObject *parent)
    : QObject(parent), d(std::make_unique<PpsServerPrivate>(this, path))
{
}

PpsServer::~PpsServer()
{
    d->stop();
}

QString PpsServer::path() const
{
    return d->path;
}

bool PpsServer::listen(mode_t mode)
{
    return d->done(d->listen(mode));
}

bool PpsServer::isListening() const
{
    return d->notifier != nullptr;
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
    return problem.isEmpty() ? d->send(client, message) : d->done(EINVAL);
}

void PpsServer::disconnectClient(quint64 client)
{
    d->drop(client);
}

int PpsServer::clientCount() const
{
    return int(d->connections.size());
}

int PpsServer::error() const
{
    return d->error;
}

QString PpsServer::errorString() const
{
    return d->error ? QString::fromStdString(std::generic_category().message(d->error)) : QString();
}

} // namespace oz
