#include "DisplayListener.hpp"

#include <QTcpSocket>
#include <QUdpSocket>

#include <sys/socket.h>
#include <unistd.h>

namespace oz::cast {

namespace {

QHostAddress peerOf(int descriptor)
{
    sockaddr_storage storage{};
    socklen_t size = sizeof storage;
    const auto *address = reinterpret_cast<const sockaddr *>(&storage);
    return ::getpeername(descriptor, reinterpret_cast<sockaddr *>(&storage), &size) == 0
        ? QHostAddress(address)
        : QHostAddress();
}

} // namespace

bool DisplayListener::listenFor(const QHostAddress &display, quint16 port)
{
    m_display = display;
    return listen(addressTowards(display), port);
}

void DisplayListener::incomingConnection(qintptr descriptor)
{
    if (!isListening() || peerOf(int(descriptor)) != m_display) {
        ::close(int(descriptor));
        return;
    }
    close();
    auto *socket = new QTcpSocket;
    socket->setSocketDescriptor(descriptor);
    Q_EMIT displayConnected(socket);
}

QHostAddress addressTowards(const QHostAddress &peer)
{
    // Connecting a socket for datagrams sends nothing.
    QUdpSocket socket;
    socket.connectToHost(peer, 9);
    return socket.localAddress();
}

} // namespace oz::cast
