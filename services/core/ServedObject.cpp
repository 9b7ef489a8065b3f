#include "core/ServedObject.hpp"

#include "core/Error.hpp"

#include <oz/PpsText.hpp>

namespace oz::services {

void Reply::addErrorTo(QVariantMap *attributes) const
{
    if (!error)
        return;
    attributes->insert(QStringLiteral("err"), error);
    attributes->insert(QStringLiteral("errstr"), errorText);
}

ServedObject::ServedObject(const QString &path) : m_server(path)
{
    const auto onReceived = [this](const PpsServer::Client &client, const QByteArray &message) {
        QString malformed;
        const QVariantMap decoded = PpsText::decode(message, &malformed);
        onMessage(client, decoded.isEmpty() ? QVariantMap() : decoded.first().toMap(), malformed);
    };
    connect(&m_server, &PpsServer::received, this, onReceived);
    connect(&m_server, &PpsServer::disconnected, this, &ServedObject::clientGone);
}

void ServedObject::start(mode_t mode)
{
    Startup::serve(m_server, mode);
}

} // namespace oz::services
