#include <oz/PpsObject.hpp>

#include "base/LastError.hpp"
#include "base/Log.hpp"
#include "pps/PpsChannel.hpp"

#include <oz/PpsText.hpp>

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QMetaMethod>
#include <QThread>

#include <cerrno>

namespace oz {

Q_LOGGING_CATEGORY(logSupport, "oz.support")

class PpsObjectPrivate final : private PpsChannelOwner
{
public:
    PpsObjectPrivate(PpsObject *object, const QString &objectPath) : q(object), path(objectPath) { }

    int open(const PpsPath &parsed, PpsOpenMode::Types wanted)
    {
        mode = wanted;
        const int failure = PpsChannel::open(parsed, mode, blocking || parsed.wait, this, &channel);
        attach();
        return failure;
    }

    // Watching a file costs a kernel watch, so it begins with the first receiver of readyRead().
    void attach()
    {
        static const QMetaMethod readyRead = QMetaMethod::fromSignal(&PpsObject::readyRead);
        if (!channel)
            return;
        // An object may be opened before its thread's event loop, or the application object, is there.
        if (!QAbstractEventDispatcher::instance())
            attachLater();
        channel->attach((mode & PpsOpenMode::Subscribe) && q->isSignalConnected(readyRead));
    }

    void attachLater()
    {
        QMetaObject::invokeMethod(
            q, [this] { attach(); }, Qt::QueuedConnection);
    }

    // The last failure counts, not the last call.
    bool done(int result) { return result == 0 || error.done(result); }

    PpsObject *q;
    QString path;
    std::unique_ptr<PpsChannel> channel;
    PpsOpenMode::Types mode;
    bool blocking = false;
    LastError error;

private:
    void messageWaits() override { Q_EMIT q->readyRead(); }
    void serviceReturned() override { Q_EMIT q->serviceReturned(); }
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
    d->error = {};
    const auto path = PpsPath::parse(d->path);
    if (!path || !mode || (mode & ~PpsOpenMode::Types(PpsOpenMode::PublishSubscribe)))
        return d->done(EINVAL);
    const int error = d->open(*path, mode);
    if (error)
        close();
    return d->done(error);
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
    return d->error.code();
}

QString PpsObject::errorString() const
{
    return d->error.text();
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
        d->channel->detach();
        d->attachLater();
    }
    return QObject::event(event);
}

void PpsObject::connectNotify(const QMetaMethod &signal)
{
    if (signal != QMetaMethod::fromSignal(&PpsObject::readyRead))
        return;
    if (QThread::currentThread() == thread())
        d->attach();
    else
        d->attachLater();
}

} // namespace oz
