#include <oz/PpsObject.hpp>

#include "base/Log.hpp"
#include "pps/PpsChannel.hpp"

#include <oz/PpsText.hpp>

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QMetaMethod>
#include <QThread>

#include <cerrno>
#include <system_error>

namespace oz {

Q_LOGGING_CATEGORY(logSupport, "oz.support")

class PpsObjectPrivate
{
public:
    PpsObjectPrivate(PpsObject *object, const QString &objectPath) : q(object), path(objectPath) { }

    // Watching costs a kernel watch, so it begins with the first receiver of readyRead().
    int listenWhereWanted()
    {
        static const QMetaMethod readyRead = QMetaMethod::fromSignal(&PpsObject::readyRead);
        if (!channel || !(mode & PpsOpenMode::Subscribe) || !q->isSignalConnected(readyRead))
            return 0;
        // An object may be opened before its thread's event loop, or the application object, is there.
        if (!QAbstractEventDispatcher::instance())
            listenLater();
        return channel->listen();
    }

    void listenLater()
    {
        QMetaObject::invokeMethod(
            q, [this] { listenOrLog(); }, Qt::QueuedConnection);
    }

    // For an object that is open already: nobody asks for a result.
    void listenOrLog()
    {
        if (!done(listenWhereWanted()))
            qCWarning(logSupport) << path
                                  << "is open, but its changes will not be heard:" << q->errorString();
    }

    bool done(int result)
    {
        if (result)
            error = result;
        return result == 0;
    }

    PpsObject *q;
    QString path;
    std::unique_ptr<PpsChannel> channel;
    PpsOpenMode::Types mode;
    bool blocking = false;
    int error = 0;
};

PpsObject::PpsObject(const QString &path, QObject *parent)
    : QObject(parent), d(std::make_unique<PpsObjectPrivate>(this, path))
{
}

PpsObject::~PpsObject() = default;

QString PpsObject::path() const
{
    return d->path;
}

bool PpsObject::open(PpsOpenMode::Types mode)
{
    close();
    d->error = 0;
    const auto path = PpsPath::parse(d->path);
    if (!path || !mode || (mode & ~PpsOpenMode::Types(PpsOpenMode::PublishSubscribe)))
        return d->done(EINVAL);
    const auto ready = [this] { Q_EMIT readyRead(); };
    if (const int error = PpsChannel::open(*path, mode, d->blocking || path->wait, ready, &d->channel))
        return d->done(error);
    d->mode = mode;
    if (const int error = d->listenWhereWanted()) {
        close();
        return d->done(error);
    }
    return true;
}

void PpsObject::setBlocking(bool blocking)
{
    d->blocking = blocking;
}

bool PpsObject::isOpen() const
{
    return d->channel != nullptr;
}

void PpsObject::close()
{
    d->channel.reset();
}

QByteArray PpsObject::read(bool *ok)
{
    QByteArray message;
    const bool readable = d->channel && (d->mode & PpsOpenMode::Subscribe);
    const bool good = d->done(readable ? d->channel->read(&message) : EBADF);
    if (ok)
        *ok = good;
    return message;
}

bool PpsObject::write(const QByteArray &data)
{
    const bool writable = d->channel && (d->mode & PpsOpenMode::Publish);
    return d->done(writable ? d->channel->write(data) : EBADF);
}

int PpsObject::error() const
{
    return d->error;
}

QString PpsObject::errorString() const
{
    return d->error ? QString::fromStdString(std::generic_category().message(d->error)) : QString();
}

QVariantMap PpsObject::decode(const QByteArray &data, bool *ok)
{
    QString error;
    QVariantMap map = PpsText::decode(data, &error);
    if (ok)
        *ok = error.isEmpty();
    return map;
}

QByteArray PpsObject::encode(const QVariantMap &attributes, bool *ok)
{
    QString error;
    QByteArray data = PpsText::encode(attributes, &error);
    if (ok)
        *ok = error.isEmpty();
    return data;
}

bool PpsObject::event(QEvent *event)
{
    // Sent on the old thread, right before the object moves to the new one.
    if (event->type() == QEvent::ThreadChange && d->channel) {
        d->channel->stopListening();
        d->listenLater();
    }
    return QObject::event(event);
}

void PpsObject::connectNotify(const QMetaMethod &signal)
{
    if (signal != QMetaMethod::fromSignal(&PpsObject::readyRead))
        return;
    if (QThread::currentThread() == thread())
        d->listenOrLog();
    else
        d->listenLater();
}

} // namespace oz
