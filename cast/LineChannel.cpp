#include "LineChannel.hpp"

#include <QJsonDocument>

#include <utility>

namespace oz::cast {

LineChannel::LineChannel(QLocalSocket *socket) : m_socket(socket)
{
    m_socket->setParent(this);
    connect(m_socket, &QLocalSocket::readyRead, this, &LineChannel::receive);
    connect(m_socket, &QLocalSocket::disconnected, this, [this] {
        receive();
        close(QStringLiteral("the connection has ended"));
    });
}

QByteArray LineChannel::lineOf(const QString &kind, const QJsonObject &content)
{
    return QJsonDocument(QJsonObject{{kind, content}}).toJson(QJsonDocument::Compact) + '\n';
}

void LineChannel::send(const QString &kind, const QJsonObject &content)
{
    m_socket->write(lineOf(kind, content));
}

void LineChannel::flush()
{
    while (m_socket->bytesToWrite() > 0 && m_socket->waitForBytesWritten(1000)) { }
}

void LineChannel::receive()
{
    while (!m_isClosed && m_socket->canReadLine()) {
        const QByteArray line = m_socket->readLine(MaxLineSize + 1);
        const QJsonObject message = QJsonDocument::fromJson(line).object();
        if (message.size() != 1 || !message.begin()->isObject())
            return close(QStringLiteral("a line is no message"));
        Q_EMIT received(message.begin().key(), message.begin()->toObject());
    }
    if (m_socket->bytesAvailable() > MaxLineSize)
        close(QStringLiteral("a line is longer than 64 KiB"));
}

void LineChannel::close(const QString &reason)
{
    if (std::exchange(m_isClosed, true))
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    Q_EMIT closed(reason);
}

} // namespace oz::cast
