#include "linux/NetworkdLeases.hpp"

#include "linux/NetworkAddresses.hpp"

#include <QDBusArgument>
#include <QDBusObjectPath>

#include <net/if.h>

namespace oz::services {

namespace {

const QString Name = QStringLiteral("org.freedesktop.network1");
const QString ServerInterface = Name + QLatin1String(".DHCPServer");

constexpr qsizetype AddressSize = 6; // bytes of a hardware address, which more may follow

// The leases in an a(uayayayayt): family, client identifier, address, gateway, hardware address, expiration.
QMap<QString, QString> leasesIn(const QVariant &value)
{
    QMap<QString, QString> leases;
    const auto list = value.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        uint family = 0;
        QByteArray client;
        QByteArray address;
        QByteArray gateway;
        QByteArray hardware;
        quint64 expiration = 0;
        list.beginStructure();
        list >> family >> client >> address >> gateway >> hardware >> expiration;
        list.endStructure();
        if (const QString text = ipv4Text(address); !text.isEmpty())
            leases.insert(
                QString::fromLatin1(hardware.first(qMin(hardware.size(), AddressSize)).toHex(':')), text);
    }
    list.endArray();
    return leases;
}

} // namespace

NetworkdLeases::NetworkdLeases(std::shared_ptr<SystemBus> bus)
    : m_networkd(std::move(bus), Name, QStringLiteral("systemd-networkd"), BusService::NeverStarted)
{
    connect(&m_networkd, &BusService::appeared, this, &NetworkdLeases::presenceChanged);
    connect(&m_networkd, &BusService::vanished, this, &NetworkdLeases::presenceChanged);
    m_networkd.hear({}, PropertiesInterface, QStringLiteral("PropertiesChanged"), this,
        [this](const QDBusMessage &message) {
            if (message.path() == m_link && message.arguments().value(0) == ServerInterface)
                read();
        });
}

void NetworkdLeases::follow(const QString &interface)
{
    m_link.clear();
    m_leases.clear();
    const int index = int(::if_nametoindex(interface.toLatin1().constData()));
    if (index == 0 || m_networkd.owner().isEmpty())
        return;
    m_networkd.call(QStringLiteral("/org/freedesktop/network1"), Name + QLatin1String(".Manager"),
        QStringLiteral("GetLinkByIndex"), {index}, this, [this](const QDBusMessage &answer) {
            if (isError(answer))
                return;
            m_link = answer.arguments().value(1).value<QDBusObjectPath>().path();
            read();
        });
}

void NetworkdLeases::read()
{
    if (m_link.isEmpty())
        return;
    m_networkd.call(m_link, PropertiesInterface, QStringLiteral("Get"),
        {ServerInterface, QStringLiteral("Leases")}, this, [this, link = m_link](const QDBusMessage &answer) {
            if (isError(answer) || link != m_link)
                return;
            m_leases = leasesIn(answer.arguments().value(0).value<QDBusVariant>().variant());
            Q_EMIT changed();
        });
}

} // namespace oz::services
