#include "publishing/ServedObject.hpp"

#include <oz/PpsText.hpp>

namespace oz::services {

void Reply::addErrorTo(QVariantMap *attributes) const
{
    if (error == 0)
        return;
    attributes->insert(QStringLiteral("err"), error);
    attributes->insert(QStringLiteral("errstr"), errorText);
}

ServedObject::ServedObject(Tree &tree, const QString &path) : TreeObject(tree, path), m_server(path)
{
    connect(&m_server, &PpsServer::received, this,
        [this](const PpsServer::Client &client, const QByteArray &message) {
            m_lastMessage = message;
            QString malformed;
            const QVariantMap objects = PpsText::decode(message, &malformed);
            const QVariantMap attributes = objects.isEmpty() ? QVariantMap() : objects.first().toMap();
            if (malformed.isEmpty())
                Q_EMIT this->tree().asked(this->path(), attributes);
            onMessage(client, attributes, malformed);
        });
    connect(&m_server, &PpsServer::connected, this, &ServedObject::clientCame);
    connect(&m_server, &PpsServer::disconnected, this, &ServedObject::clientGone);
}

void ServedObject::start(mode_t mode)
{
    m_mode = mode;
    attempt();
}

TreeObject::Failure ServedObject::put()
{
    if (m_server.isListening() || m_server.listen(m_mode))
        return {};
    return {m_server.error(), m_server.errorString()};
}

} // namespace oz::services
