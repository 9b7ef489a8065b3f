#include "DaemonLink.hpp"

#include <utility>

using oz::PpsObject;
using oz::PpsOpenMode;

DaemonLink::DaemonLink(QObject *parent)
    : QObject(parent), m_control(QStringLiteral("/pps/system/ozdeviced/control"))
{
    connect(&m_control, &PpsObject::readyRead, this, &DaemonLink::takeAnswers);
    connect(&m_control, &PpsObject::serviceReturned, this, [this] {
        giveUp(tr("the services were started anew"));
        Q_EMIT opened();
    });
    connect(&m_again, &QTimer::timeout, this, &DaemonLink::open);
    m_again.setInterval(2000);
    // Whoever made it hears of it.
    QTimer::singleShot(0, this, &DaemonLink::open);
}

void DaemonLink::open()
{
    if (!m_control.open(PpsOpenMode::PublishSubscribe)) {
        m_again.start();
        return;
    }
    m_again.stop();
    Q_EMIT opened();
}

void DaemonLink::ask(const QString &request, const QVariantMap &data, const Answered &answered)
{
    const int id = ++m_last;
    QVariantMap message{{QStringLiteral("msg"), request}, {QStringLiteral("id"), id}};
    if (!data.isEmpty())
        message.insert(QStringLiteral("dat"), data);
    m_asked.insert(id, answered);
    if (m_control.write(PpsObject::encode(message)))
        return;
    const QString problem = m_control.errorString();
    QTimer::singleShot(0, this, [this, id, problem] {
        if (const Answered waiting = m_asked.take(id))
            waiting({}, problem);
    });
}

void DaemonLink::takeAnswers()
{
    bool ok = false;
    for (QByteArray message = m_control.read(&ok); ok; message = m_control.read(&ok)) {
        const QVariantMap objects = PpsObject::decode(message);
        const QVariantMap answer = objects.isEmpty() ? QVariantMap() : objects.first().toMap();
        if (const Answered answered = m_asked.take(answer.value(QStringLiteral("id")).toInt()))
            answered(answer.value(QStringLiteral("dat")).toMap(),
                answer.value(QStringLiteral("errstr")).toString());
    }
    if (m_control.error() == ECONNRESET)
        giveUp(m_control.errorString());
}

void DaemonLink::giveUp(const QString &problem)
{
    for (const Answered &answered : std::exchange(m_asked, {}))
        answered({}, problem);
}
