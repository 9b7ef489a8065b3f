#include "PhoneControl.hpp"

using oz::PpsObject;
using oz::PpsOpenMode;

namespace {

QVariantMap attributesOf(const QByteArray &message)
{
    const QVariantMap objects = PpsObject::decode(message);
    return objects.isEmpty() ? QVariantMap() : objects.first().toMap();
}

} // namespace

PhoneControl::PhoneControl(QObject *parent)
    : QObject(parent), m_control(QStringLiteral("/pps/system/ozdeviced/control")),
      m_ledStatus(QStringLiteral("/pps/services/led/status")),
      m_vibration(QStringLiteral("/pps/services/vibration/activity")), m_led(Qt::transparent)
{
    connect(&m_control, &PpsObject::readyRead, this, &PhoneControl::takeAnswer);
    connect(&m_control, &PpsObject::serviceReturned, this,
        [this] { ask(QStringLiteral("describe"), {}, QString()); });
    connect(&m_ledStatus, &PpsObject::readyRead, this, &PhoneControl::readLed);
    connect(&m_vibration, &PpsObject::readyRead, this, &PhoneControl::readVibration);
    connect(&m_again, &QTimer::timeout, this, &PhoneControl::connectToDaemon);
    m_again.setInterval(2000);
    connectToDaemon();
}

void PhoneControl::connectToDaemon()
{
    if (!m_ledStatus.isOpen() && m_ledStatus.open(PpsOpenMode::Subscribe))
        readLed();
    if (!m_vibration.isOpen() && m_vibration.open(PpsOpenMode::Subscribe))
        readVibration();
    if (!m_control.open(PpsOpenMode::PublishSubscribe)) {
        m_again.start();
        return;
    }
    m_again.stop();
    Q_EMIT changed();
    ask(QStringLiteral("describe"), {}, QString());
}

void PhoneControl::tell(const QStringList &words)
{
    const QString order = words.join(u' ');
    if (words.size() < 2) {
        Q_EMIT answered(order, tr("this is no order"));
        return;
    }
    ask(QStringLiteral("sim"),
        QVariantMap{{QStringLiteral("facility"), words.at(0)}, {QStringLiteral("verb"), words.at(1)},
            {QStringLiteral("arguments"), words.sliced(2)}},
        order);
}

void PhoneControl::ask(const QString &request, const QVariant &data, const QString &order)
{
    QVariantMap message{{QStringLiteral("msg"), request}};
    if (data.isValid())
        message.insert(QStringLiteral("dat"), data);
    if (m_control.write(PpsObject::encode(message)))
        m_asked.enqueue(order);
    else
        Q_EMIT answered(order, m_control.errorString());
}

void PhoneControl::takeAnswer()
{
    bool ok = false;
    for (QByteArray message = m_control.read(&ok); ok; message = m_control.read(&ok)) {
        const QVariantMap answer = attributesOf(message);
        const QString order = m_asked.isEmpty() ? QString() : m_asked.dequeue();
        if (!order.isEmpty()) {
            Q_EMIT answered(order, answer.value(QStringLiteral("errstr")).toString());
            continue;
        }
        const QVariantMap parts =
            answer.value(QStringLiteral("dat")).toMap().value(QStringLiteral("simulated")).toMap();
        m_facilities.clear();
        for (auto part = parts.begin(); part != parts.end(); ++part) {
            QVariantMap facility = part->toMap();
            facility.insert(QStringLiteral("name"), part.key());
            m_facilities.append(facility);
        }
        Q_EMIT changed();
    }
    if (m_control.error() == ECONNRESET)
        m_asked.clear(); // what was asked is not answered any more
}

void PhoneControl::readLed()
{
    const QVariantMap lit = attributesOf(m_ledStatus.read());
    const auto element = [&](const QString &name) {
        const QVariant value = lit.value(name);
        return value.toBool() && value != QStringLiteral("off") ? 255 : 0;
    };
    const QColor shown(
        element(QStringLiteral("red")), element(QStringLiteral("green")), element(QStringLiteral("blue")));
    m_led = shown == QColor(Qt::black) ? QColor(Qt::transparent) : shown;
    Q_EMIT ledChanged();
}

void PhoneControl::readVibration()
{
    m_vibrating = attributesOf(m_vibration.read()).value(QStringLiteral("running")).toBool();
    Q_EMIT vibratingChanged();
}
