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
    m_server.setMessageLimit(m_messageLimit);
    connect(&m_server, &PpsServer::refused, this, &ServedObject::refuse);
    connect(&m_server, &PpsServer::connected, this, &ServedObject::clientCame);
    connect(&m_server, &PpsServer::connected, this, [this] { Q_EMIT this->tree().opened(this->path()); });
    connect(&m_server, &PpsServer::disconnected, this, &ServedObject::clientGone);
}

void ServedObject::setMessageLimit(qsizetype bytes)
{
    m_messageLimit = bytes;
    m_server.setMessageLimit(bytes);
}

void ServedObject::refuse(const PpsServer::Client &client, const QByteArray &beginning)
{
    m_lastMessage = beginning.first(beginning.lastIndexOf('\n') + 1);
    const QVariantMap objects = PpsText::decode(m_lastMessage);
    onMessage(client, objects.isEmpty() ? QVariantMap() : objects.first().toMap(),
        QStringLiteral("a message has at most %1 bytes").arg(m_messageLimit));
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
