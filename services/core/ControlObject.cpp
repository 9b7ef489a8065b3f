#include "core/ControlObject.hpp"

#include "core/Error.hpp"

#include <oz/PpsText.hpp>

#include <QTimer>

#include <cerrno>

namespace oz::services {

ControlObject::ControlObject(const QString &path, Handler handler, MishapOf mishap)
    : m_server(path), m_handler(std::move(handler)), m_mishap(std::move(mishap))
{
    connect(&m_server, &PpsServer::received, this, &ControlObject::onReceived);
    connect(&m_server, &PpsServer::disconnected, this, &ControlObject::clientGone);
}

void ControlObject::start(mode_t mode)
{
    if (!m_server.listen(mode)) {
        Startup::fail(
            QLatin1String("cannot serve ") + m_server.path() + QLatin1String(": ") + m_server.errorString());
    }
}

void ControlObject::onReceived(const PpsServer::Client &client, const QByteArray &message)
{
    QString malformed;
    const QVariantMap decoded = PpsText::decode(message, &malformed);
    Request request{client, {}, {}, {}};
    if (malformed.isEmpty()) {
        const QVariantMap attributes = decoded.first().toMap();
        request.message = attributes.value(QStringLiteral("msg")).toString();
        request.id = attributes.value(QStringLiteral("id"));
        request.data = attributes.value(QStringLiteral("dat"));
        if (request.message.isEmpty())
            malformed = QStringLiteral("the request has no 'msg'");
    }
    if (!malformed.isEmpty()) {
        answer(request, Reply::failure(EINVAL, malformed));
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
        QTimer::singleShot(mishap.number, this, [this, request] { handle(request); });
        break;
    case Mishap::NeverAnswer:
        break;
    case Mishap::DieOnRequest:
        m_server.disconnectClient(request.client.id);
        break;
    case Mishap::AnswerRubbish:
        m_server.send(request.client.id, QByteArrayLiteral("rubbish\n"));
        break;
    }
}

void ControlObject::answer(const Request &request, const Reply &reply)
{
    QVariantMap attributes{{QStringLiteral("res"), request.message}};
    if (request.id.isValid())
        attributes.insert(QStringLiteral("id"), request.id);
    if (reply.data.isValid())
        attributes.insert(QStringLiteral("dat"), reply.data);
    if (reply.error) {
        attributes.insert(QStringLiteral("err"), reply.error);
        attributes.insert(QStringLiteral("errstr"), reply.errorText);
    }
    m_server.send(request.client.id, attributes);
}

} // namespace oz::services
