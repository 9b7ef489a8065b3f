#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QTcpSocket>

namespace oz::cast {

/*!
 * The control connection to a display of the same network ("Miracast over Infrastructure"), which asks the
 * display to connect to this machine, and tells it at the end that the projection is over.
 */
class DisplayControl : public QObject
{
    Q_OBJECT

public:
    /*! How this machine presents itself. */
    struct Source
    {
        QString name;
        QByteArray identifier; //!< 16 bytes, the same at each time
        quint16 rtspPort;
    };

    enum class Command : quint8 { SourceReady = 1, StopProjection = 2 };

    DisplayControl(const QHostAddress &display, quint16 port, const Source &source);

    /*! Tells the display, and closes the connection. */
    void stopProjection();

    /*! A message, as it is sent. */
    [[nodiscard]] static QByteArray messageOf(Command command, const Source &source);

Q_SIGNALS:
    /*! The display has been asked to connect. */
    void asked();
    /*! The display cannot be asked; \a reason is for a person. */
    void unreachable(const QString &reason);
    /*! The display wants the projection to be over. */
    void stopped();

private:
    void receive();

    QTcpSocket m_socket;
    const Source m_source;
    QByteArray m_received;
    bool m_isAsked = false;
};

} // namespace oz::cast
