#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QLocalSocket>
#include <QObject>
#include <QString>

namespace oz::cast {

/*!
 * Messages over a Unix stream socket: each is a line with a JSON object of one member, whose name is the kind
 * of the message and whose value is an object.
 */
class LineChannel : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype MaxLineSize = 64 * 1024;

    /*! Takes over \a socket, which is connected. */
    explicit LineChannel(QLocalSocket *socket);

    /*! A message as it is sent. */
    [[nodiscard]] static QByteArray lineOf(const QString &kind, const QJsonObject &content);
    void send(const QString &kind, const QJsonObject &content);
    /*! Waits until all is written. */
    void flush();

Q_SIGNALS:
    void received(const QString &kind, const QJsonObject &content);
    /*! Nothing more comes; \a reason is for a person. Emitted once. */
    void closed(const QString &reason);

private:
    void receive();
    void close(const QString &reason);

    QLocalSocket *m_socket;
    bool m_isClosed = false;
};

} // namespace oz::cast
