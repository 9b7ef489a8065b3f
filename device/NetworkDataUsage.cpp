#include <oz/device/NetworkDataUsage.hpp>

#include "Log.hpp"
#include "NetworkDataUsagePrivate.hpp"
#include "ThreadRule.hpp"

#include <oz/InterfaceData.hpp>

#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace oz::device {

namespace {

using Counters = NetworkDataUsagePrivate::Counters;

using Changes =
    ChangeTable<Change<Fields<&Counters::packetsReceived>, &NetworkDataUsage::packetsReceivedChanged>,
        Change<Fields<&Counters::bytesReceived>, &NetworkDataUsage::bytesReceivedChanged>,
        Change<Fields<&Counters::packetsSent>, &NetworkDataUsage::packetsSentChanged>,
        Change<Fields<&Counters::bytesSent>, &NetworkDataUsage::bytesSentChanged>>;

InterfaceData recordFor(const QString &networkInterfaceName)
{
    InterfaceData record;
    const QByteArray name = networkInterfaceName.toUtf8();
    std::memcpy(record.name, name.constData(), std::min<std::size_t>(name.size(), sizeof record.name - 1));
    return record;
}

} // namespace

NetworkDataUsage::NetworkDataUsage(QObject *parent) : NetworkDataUsage(QString(), parent) { }

NetworkDataUsage::NetworkDataUsage(const QString &networkInterfaceName, QObject *parent)
    : QObject(parent), d(new NetworkDataUsagePrivate{this, networkInterfaceName})
{
    keepOnThread(this);
}

NetworkDataUsage::~NetworkDataUsage()
{
    delete d;
}

QString NetworkDataUsage::networkInterfaceName() const
{
    return d->networkInterfaceName;
}

quint64 NetworkDataUsage::packetsReceived() const
{
    return d->counters->packetsReceived;
}

quint64 NetworkDataUsage::bytesReceived() const
{
    return d->counters->bytesReceived;
}

quint64 NetworkDataUsage::packetsSent() const
{
    return d->counters->packetsSent;
}

quint64 NetworkDataUsage::bytesSent() const
{
    return d->counters->bytesSent;
}

void NetworkDataUsage::setNetworkInterfaceName(const QString &networkInterfaceName)
{
    if (networkInterfaceName == d->networkInterfaceName)
        return;
    d->networkInterfaceName = networkInterfaceName;
    const QPointer<NetworkDataUsage> alive(this);
    Changes::storeAndEmit(this, &d->counters, {});
    // A slot may have set another, which is announced by then.
    if (alive && d->networkInterfaceName == networkInterfaceName)
        Q_EMIT networkInterfaceNameChanged(networkInterfaceName);
}

bool NetworkDataUsage::update()
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0) {
        qCWarning(logDevice) << "NetworkDataUsage - failed to create socket";
        return false;
    }
    InterfaceData record = recordFor(d->networkInterfaceName);
    const int result = interfaceRequest(socket, GetInterfaceData, &record);
    ::close(socket);
    if (result < 0) {
        qCWarning(logDevice) << "NetworkDataUsage - failed to read network stats";
        return false;
    }
    Changes::storeAndEmit(this, &d->counters,
        {
            .packetsReceived = record.packetsReceived,
            .bytesReceived = record.bytesReceived,
            .packetsSent = record.packetsSent,
            .bytesSent = record.bytesSent,
        });
    return true;
}

} // namespace oz::device
