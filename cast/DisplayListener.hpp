#pragma once

#include <QHostAddress>
#include <QTcpServer>

namespace oz::cast {

/*!
 * Listens for the one display that a cast waits for. It listens on the address that this machine has towards
 * the display alone, closes the connections of everybody else without reading from them, and stops listening
 * once the display has come.
 */
class DisplayListener : public QTcpServer
{
    Q_OBJECT

public:
    /*! False where it cannot listen; then errorString() says why. */
    [[nodiscard]] bool listenFor(const QHostAddress &display, quint16 port);

Q_SIGNALS:
    /*! The socket belongs to who receives it. */
    void displayConnected(QTcpSocket *socket);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    QHostAddress m_display;
};

/*! This machine's address towards \a peer; a null address where no route leads there. */
[[nodiscard]] QHostAddress addressTowards(const QHostAddress &peer);

} // namespace oz::cast
