#include "wifi-direct/WpaGroup.hpp"

#include <QDBusArgument>

#include <algorithm>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;
using Role = WiFiDirectState::Role;

// By DHCP a client has its address after some eight seconds.
constexpr std::chrono::milliseconds LongestAddressing = 20s;
constexpr auto AddressingPause = 1s;

const QString OwnerRole = QStringLiteral("GO");

QString valueText(const QVariantMap &properties, const char *name)
{
    return properties.value(QLatin1String(name)).toString();
}

} // namespace

WpaGroup::WpaGroup(WpaSupplicant &supplicant, const WpaPeers &peers, NetworkdLeases &leases)
    : m_supplicant(supplicant), m_peers(peers), m_leases(leases)
{
    m_addressing.setInterval(AddressingPause);
    m_addressing.callOnTimeout(this, &WpaGroup::awaitAddresses);
    connect(&m_addresses, &NetworkAddresses::changed, this, &WpaGroup::readAddresses);
    connect(&m_leases, &NetworkdLeases::changed, this, &WpaGroup::readAddresses);
    const auto argument = [](const QDBusMessage &message) {
        return qdbus_cast<QVariantMap>(message.arguments().value(0));
    };
    const auto interfaceIn = [argument](const QDBusMessage &message) {
        return pathOf(argument(message).value(QStringLiteral("interface_object")));
    };
    m_supplicant.hear({}, Wpa::P2p, QStringLiteral("GroupStarted"), this,
        [this, argument](const QDBusMessage &message) { begin(argument(message), [] {}); });
    m_supplicant.hear({}, Wpa::P2p, QStringLiteral("GroupFinished"), this,
        [this, interfaceIn](const QDBusMessage &message) {
            if (interfaceIn(message) == m_interface)
                finish();
        });
    m_supplicant.hear(
        Wpa::Root, Wpa::Name, QStringLiteral("InterfaceRemoved"), this, [this](const QDBusMessage &message) {
            if (pathOf(message.arguments().value(0)) == m_interface)
                finish();
        });
    m_supplicant.hear({}, Wpa::P2p, QStringLiteral("GONegotiationSuccess"), this,
        [this, argument](const QDBusMessage &message) {
            const auto address = [negotiated = argument(message)](const char *name) {
                return QString::fromLatin1(negotiated.value(QLatin1String(name)).toByteArray().toHex(':'));
            };
            m_hardware.insert(address("peer_device_addr"), address("peer_interface_addr"));
        });
    const auto hearOfGroup = [this](const char *signal, void (WpaGroup::*act)(const QString &object)) {
        m_supplicant.hear(
            {}, Wpa::Group, QLatin1String(signal), this, [this, act](const QDBusMessage &message) {
                if (message.path() == m_object)
                    (this->*act)(pathOf(message.arguments().value(0)));
            });
    };
    hearOfGroup("PeerJoined", &WpaGroup::add);
    hearOfGroup("PeerDisconnected", &WpaGroup::remove);
    m_supplicant.hear(
        {}, Wpa::Interface, QStringLiteral("StaAuthorized"), this, [this](const QDBusMessage &message) {
            if (message.path() == m_interface)
                onStation(message.arguments().value(0).toString());
        });
}

QList<WpaGroup::Member> WpaGroup::members() const
{
    QList<Member> members;
    for (const Joined &joined : m_joined) {
        if (!joined.member.ipAddress.isEmpty() || joined.since.hasExpired(LongestAddressing.count()))
            members.append(joined.member);
    }
    return members;
}

bool WpaGroup::contains(const QString &address) const
{
    return std::any_of(m_joined.cbegin(), m_joined.cend(), [&](const Joined &joined) {
        return joined.member.address.compare(address, Qt::CaseInsensitive) == 0;
    });
}

void WpaGroup::findPresent(const std::function<void()> &done)
{
    m_supplicant.read({{Wpa::Root, Wpa::Name}}, this, [this, done](const QList<QVariantMap> &root) {
        auto interfaces = qdbus_cast<QList<QDBusObjectPath>>(root[0].value(QStringLiteral("Interfaces")));
        interfaces.removeAll(QDBusObjectPath(m_supplicant.radio()));
        QList<WpaSupplicant::Part> parts;
        for (const QDBusObjectPath &interface : std::as_const(interfaces))
            parts.append({interface.path(), Wpa::P2p});
        m_supplicant.read(parts, this, [this, interfaces, done](const QList<QVariantMap> &all) {
            for (qsizetype i = 0; i < all.size(); ++i) {
                const QVariant group = all[i].value(QStringLiteral("Group"));
                if (m_interface.isEmpty() && !pathOf(group).isEmpty()) {
                    return begin({{QStringLiteral("interface_object"), QVariant::fromValue(interfaces[i])},
                                     {QStringLiteral("group_object"), group},
                                     {QStringLiteral("role"), all[i].value(QStringLiteral("Role"))}},
                        done);
                }
            }
            done();
        });
    });
}

void WpaGroup::setOwnerIpAddress(const QString &address)
{
    if (m_group && m_group->role == Role::Client && m_group->ownerIpAddress.isEmpty())
        m_givenOwnerAddress = address;
    readAddresses();
}

void WpaGroup::end(QObject *context, const WpaSupplicant::Answered &done)
{
    // On the group's own interface: the radio's refuses.
    m_supplicant.call(m_interface, Wpa::P2p, QStringLiteral("Disconnect"), {}, context, done);
}

void WpaGroup::forget()
{
    finish();
    m_hardware.clear();
}

void WpaGroup::begin(const QVariantMap &properties, const std::function<void()> &done)
{
    finish();
    m_interface = pathOf(properties.value(QStringLiteral("interface_object")));
    m_object = pathOf(properties.value(QStringLiteral("group_object")));
    m_givenOwnerAddress = ipv4Text(properties.value(QStringLiteral("IpAddrGo")).toByteArray());
    const Role role = valueText(properties, "role") == OwnerRole ? Role::GroupOwner : Role::Client;
    m_supplicant.read({{m_interface, Wpa::Interface}, {m_interface, Wpa::P2p}, {m_object, Wpa::Group}}, this,
        [this, interface = m_interface, role, done](const QList<QVariantMap> &all) {
            if (interface == m_interface) // it has not ended meanwhile
                take(role, all[0], all[1], all[2]);
            done();
        });
}

void WpaGroup::take(Role role, const QVariantMap &link, const QVariantMap &p2p, const QVariantMap &properties)
{
    const auto bytes = [&](const char *name) { return properties.value(QLatin1String(name)).toByteArray(); };
    // Of a client's group, only the group's interface says who the owner is.
    const QString owner = pathOf(p2p.value(QStringLiteral("PeerGO")));
    Group group;
    group.interface = valueText(link, "Ifname");
    group.role = role;
    group.ssid = QString::fromUtf8(bytes("SSID"));
    group.password = valueText(properties, "Passphrase");
    group.ownerAddress = role == Role::GroupOwner ? QString::fromLatin1(bytes("BSSID").toHex(':'))
                                                  : WpaPeers::addressIn(owner);
    m_group = group;
    m_leases.follow(role == Role::GroupOwner ? group.interface : QString());
    if (role == Role::Client)
        add(owner);
    for (const QString &member : pathsIn(properties.value(QStringLiteral("Members"))))
        add(member);
    // Of a member alone the address in the group is clear, also where its coming was not seen.
    const QStringList stations = pathsIn(link.value(QStringLiteral("Stations")));
    if (role == Role::GroupOwner && stations.size() == 1 && m_joined.size() == 1)
        onStation(WpaPeers::addressIn(stations.first()));
    readAddresses();
    Q_EMIT started();
    Q_EMIT changed();
}

// A client that joins again within moments belongs to the forming of a group.
void WpaGroup::add(const QString &object)
{
    const QString address = WpaPeers::addressIn(object);
    if (address.isEmpty() || contains(address))
        return;
    Joined joined;
    joined.member.address = address;
    if (const auto *peer = m_peers.find(address)) {
        joined.member.name = peer->name;
        joined.member.type = peer->type;
    }
    joined.member.role = m_group && m_group->role == Role::Client ? Role::GroupOwner : Role::Client;
    joined.hardware = m_hardware.value(address);
    joined.since.start();
    m_joined.append(joined);
    m_addressing.start();
    readAddresses();
}

void WpaGroup::remove(const QString &object)
{
    const QString address = WpaPeers::addressIn(object);
    if (m_joined.removeIf([&](const Joined &joined) { return joined.member.address == address; }) > 0)
        Q_EMIT changed();
}

// Its address in the group follows each member's coming. Nothing says whose it is, but they come in pairs.
void WpaGroup::onStation(const QString &hardware)
{
    const auto has = [&](const Joined &joined) { return joined.hardware == hardware; };
    if (std::any_of(m_joined.cbegin(), m_joined.cend(), has))
        return;
    const auto next = std::find_if(
        m_joined.begin(), m_joined.end(), [](const Joined &joined) { return joined.hardware.isEmpty(); });
    if (next == m_joined.end())
        return;
    next->hardware = hardware;
    readAddresses();
}

// networkd does not always say that it has given an address.
void WpaGroup::awaitAddresses()
{
    const bool isOver = std::all_of(m_joined.cbegin(), m_joined.cend(), [](const Joined &joined) {
        return !joined.member.ipAddress.isEmpty() || joined.since.hasExpired(LongestAddressing.count());
    });
    if (!isOver)
        return m_leases.read();
    m_addressing.stop();
    Q_EMIT changed(); // with those that got none
}

// The kernel knows a neighbour once something was sent to it, and networkd's server whom it gave an address.
QString WpaGroup::addressOf(const QString &hardware) const
{
    const QString neighbour = NetworkAddresses::neighbour(m_group->interface, hardware);
    return neighbour.isEmpty() ? m_leases.addressOf(hardware) : neighbour;
}

void WpaGroup::readAddresses()
{
    if (!m_group)
        return;
    const bool isOwner = m_group->role == Role::GroupOwner;
    const QString &interface = m_group->interface;
    bool isNews = false;
    const auto take = [&isNews](QString *into, const QString &address) {
        if (!address.isEmpty() && *into != address) {
            *into = address;
            isNews = true;
        }
    };
    if (isOwner)
        take(&m_group->ownerIpAddress, NetworkAddresses::own(interface));
    else
        take(&m_group->ownerIpAddress,
            m_givenOwnerAddress.isEmpty() ? NetworkAddresses::gateway(interface) : m_givenOwnerAddress);
    for (Joined &joined : m_joined) {
        if (!isOwner)
            take(&joined.member.ipAddress, m_group->ownerIpAddress);
        else if (!joined.hardware.isEmpty())
            take(&joined.member.ipAddress, addressOf(joined.hardware));
    }
    if (isNews)
        Q_EMIT changed();
}

void WpaGroup::finish()
{
    const bool was = m_group.has_value();
    m_leases.follow({});
    m_interface.clear();
    m_object.clear();
    m_group.reset();
    m_joined.clear();
    if (was)
        Q_EMIT ended();
}

} // namespace oz::services
