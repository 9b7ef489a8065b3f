#include "Probe.hpp"

namespace oz::cast {

Probe::Probe(const QList<Target> &targets, std::chrono::milliseconds limit, QObject *parent)
    : QObject(parent), m_open(targets.size())
{
    m_limit.setSingleShot(true);
    m_limit.callOnTimeout(this, &Probe::finish);
    m_limit.start(targets.isEmpty() ? std::chrono::milliseconds(0) : limit);
    for (const Target &target : targets) {
        auto *socket = new QTcpSocket(this);
        connect(socket, &QTcpSocket::connected, this, [this, socket, address = target.address] {
            socket->disconnect(this);
            socket->abort();
            m_accepting.append(address);
            onAnswer();
        });
        connect(socket, &QTcpSocket::errorOccurred, this, &Probe::onAnswer);
        socket->connectToHost(target.address, target.port);
    }
}

void Probe::onAnswer()
{
    if (--m_open == 0)
        finish();
}

void Probe::finish()
{
    m_limit.stop();
    for (QTcpSocket *socket : findChildren<QTcpSocket *>())
        socket->disconnect(this);
    Q_EMIT done(m_accepting);
    deleteLater();
}

} // namespace oz::cast
