#include "core/ControlObject.hpp"

#include <QTimer>

#include <cerrno>

namespace oz::services {

ControlObject::ControlObject(const QString &path, Handler handler, MishapOf mishap)
    : ServedObject(path), m_handler(std::move(handler)), m_mishap(std::move(mishap))
{
}

void ControlObject::onMessage(
    const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed)
{
    const Request request{client, attributes.value(QStringLiteral("msg")).toString(),
        attributes.value(QStringLiteral("id")), attributes.value(QStringLiteral("dat"))};
    if (!malformed.isEmpty()) {
        answer(request, Reply::failure(EINVAL, malformed));
    } else if (request.message.isEmpty()) {
        answer(request, Reply::failure(EINVAL, QStringLiteral("the request has no 'msg'")));
    } else if (const auto mishap = m_mishap ? m_mishap(request) : std::nullopt) {
        suffer(*mishap, request);
    } else {
        handle(request);
    }
}

void ControlObject::handle(const Request &request)
{
    if (const std::optional<Reply> reply = m_handler(request))
        answer(request, *reply);
}

void ControlObject::suffer(const Mishap &mishap, const Request &request)
{
    switch (mishap.kind) {
    case Mishap::FailWith:
        answer(request, Reply::failure(mishap.number, qt_error_string(mishap.number)));
        break;
    case Mishap::AnswerLate:
        handleLater(mishap.number, request);
        break;
    case Mishap::NeverAnswer:
        break;
    case Mishap::DieOnRequest:
        server().disconnectClient(request.client.id);
        break;
    case Mishap::AnswerRubbish:
        server().send(request.client.id, QByteArrayLiteral("rubbish\n"));
        break;
    }
}

// A client that is gone by then has nobody to take back what it asked for.
void ControlObject::handleLater(int milliseconds, const Request &request)
{
    auto *delay = new QTimer(this);
    delay->setSingleShot(true);
    connect(delay, &QTimer::timeout, delay, &QObject::deleteLater);
    connect(delay, &QTimer::timeout, this, [this, request] { handle(request); });
    connect(this, &ServedObject::clientGone, delay, [delay, request](const PpsServer::Client &client) {
        if (client.id != request.client.id)
            return;
        delay->stop();
        delay->deleteLater();
    });
    delay->start(milliseconds);
}

void ControlObject::answer(const Request &request, const Reply &reply)
{
    QVariantMap attributes{{QStringLiteral("res"), request.message}};
    if (request.id.isValid())
        attributes.insert(QStringLiteral("id"), request.id);
    if (reply.data.isValid())
        attributes.insert(QStringLiteral("dat"), reply.data);
    reply.addErrorTo(&attributes);
    server().send(request.client.id, attributes);
}

} // namespace oz::services
