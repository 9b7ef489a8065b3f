#include "LedPrivate.hpp"

#include "ControlErrors.hpp"
#include "LedKey.hpp"

#include "../mock/LedPpsChannel.hpp"

#include <QMutexLocker>
#include <QPointer>
#include <QSignalBlocker>
#include <QThread>

namespace oz::device {

using ozmock::LedPpsChannel;

const QString s_attributeMsg = QStringLiteral("msg");
const QString s_attributeId = QStringLiteral("id");
const QString s_attributeDat = QStringLiteral("dat");
const QString s_attributeMsgRequest = QStringLiteral("requestLED");
const QString s_attributeMsgCancel = QStringLiteral("cancelLED");
const QString s_attributeColor = QStringLiteral("color");
const QString s_attributeBlinkCount = QStringLiteral("blinkCount");
const QString s_objectStatus = QStringLiteral("@status");
const QString s_attributeRed = QStringLiteral("red");
const QString s_attributeGreen = QStringLiteral("green");
const QString s_attributeBlue = QStringLiteral("blue");
const QString s_attributeOn = QStringLiteral("on");

// The time in which an operation holds the mutex, which outlives an object that a slot destroys meanwhile.
class LedPrivate::Operation
{
public:
    explicit Operation(const LedPrivate &led) : m_mutex(led.m_mutex), m_lock(m_mutex.get()) { }

private:
    std::shared_ptr<QRecursiveMutex> m_mutex;
    QMutexLocker<QRecursiveMutex> m_lock;
};

LedPrivate::LedPrivate(Led &publicObject, LedColor::Type color)
    : QObject(&publicObject), q(publicObject), m_key(createKey()), m_color(color)
{
}

LedPrivate::~LedPrivate()
{
    const QSignalBlocker silence(&q);
    cancel();
}

LedColor::Type LedPrivate::fixColor(int color)
{
    switch (color) {
    case LedColor::Red + 1:
        return LedColor::Red;
    case LedColor::Yellow + 1:
        return LedColor::Yellow;
    case LedColor::Magenta + 1:
        return LedColor::Magenta;
    case LedColor::White + 1:
        return LedColor::White;
    default:
        return LedColor::Type(color);
    }
}

QVariantMap LedPrivate::message(const QString &name, const QVariantMap &data) const
{
    return {{s_attributeMsg, name}, {s_attributeId, m_key}, {s_attributeDat, data}};
}

void LedPrivate::flash()
{
    flash(-1);
}

void LedPrivate::flash(int count)
{
    const Operation operation(*this);
    const qint32 wanted = count < 0 ? -1 : count;
    if (isActive()) {
        if (wanted == 0)
            cancel();
        else
            m_remainingFlashCount = wanted;
        return;
    }
    const QString name = LedColor::toName(m_color);
    if (name.isNull() || wanted == 0)
        return;
    m_remainingFlashCount = wanted;
    const QVariantMap request =
        message(s_attributeMsgRequest, {{s_attributeColor, name.toLower()}, {s_attributeBlinkCount, wanted}});
    // Another thread's objects cannot be children of this one.
    auto *channel = new LedPpsChannel(QThread::currentThread() == thread() ? this : nullptr);
    m_channel = channel;
    connect(this, &LedPrivate::send, channel, &LedPpsChannel::sendPassthrough);
    connect(channel, &LedPpsChannel::receivePassthrough, this, &LedPrivate::onReceive);

    const QPointer<LedPrivate> alive(this);
    Q_EMIT q.activeChanged(true);
    // A slot may have ended this request, and begun another.
    if (!alive || m_channel != channel)
        return;
    Q_EMIT send(request);
    noteOutcome(*channel);
    bringHome(channel);
}

void LedPrivate::noteOutcome(const LedPpsChannel &channel)
{
    if (const PpsObject *failed = channel.failed())
        ControlErrors::noteFailure(*failed);
    else
        ControlErrors::noteSuccess();
}

// The service's status is heard from this object's event loop, whichever thread asked to flash.
void LedPrivate::bringHome(LedPpsChannel *channel)
{
    if (channel->thread() == thread())
        return;
    channel->moveToThread(thread());
    QMetaObject::invokeMethod(channel, [channel, parent = QPointer<LedPrivate>(this)] {
        if (parent)
            channel->setParent(parent);
    });
}

void LedPrivate::cancel()
{
    const Operation operation(*this);
    if (!isActive())
        return;
    LedPpsChannel *channel = std::exchange(m_channel, nullptr);
    channel->onSend(message(s_attributeMsgCancel, {}));
    noteOutcome(*channel);
    // All of it before the signal, whose slots may begin the next request, or destroy this object.
    m_remainingFlashCount = 0;
    channel->disconnect(this);
    disconnect(channel);
    if (channel->thread() == QThread::currentThread())
        channel->close();
    bringHome(channel);
    channel->deleteLater();
    Q_EMIT q.activeChanged(false);
}

void LedPrivate::onReceive(const QVariantMap &message)
{
    const Operation operation(*this);
    if (!isActive())
        return;
    const QVariantMap status = message.value(s_objectStatus).toMap();
    const auto isOn = [&status](const QString &element) {
        return status.value(element).toString() == s_attributeOn;
    };
    const LedColor::Type seen =
        LedColor::fromBitset(isOn(s_attributeRed), isOn(s_attributeGreen), isOn(s_attributeBlue));
    if (seen != m_color || m_remainingFlashCount == -1)
        return;
    if (m_remainingFlashCount == 1)
        cancel();
    else
        Q_EMIT q.remainingFlashCountChanged(--m_remainingFlashCount);
}

void LedPrivate::setColor(LedColor::Type color)
{
    const Operation operation(*this);
    const LedColor::Type wanted = fixColor(color);
    if (wanted == m_color)
        return;
    if (!isActive()) {
        m_color = wanted;
        announceColor();
    } else if (wanted == LedColor::None) {
        const QPointer<LedPrivate> alive(this);
        cancel();
        if (alive)
            m_color = wanted; // which activeChanged has told
    } else {
        const qint32 left = m_remainingFlashCount;
        m_color = wanted;
        {
            const QSignalBlocker silence(&q);
            cancel();
            flash(left);
        }
        announceColor();
    }
}

void LedPrivate::resetColor()
{
    setColor(LedColor::Red);
}

void LedPrivate::announceColor()
{
    const LedColor::Type value = m_color;
    const QPointer<Led> alive(&q);
    Q_EMIT q.colorChanged(value);
    if (alive)
        Q_EMIT alive->colorChanged(int(value));
}

} // namespace oz::device
