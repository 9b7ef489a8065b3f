#include "wifi-direct/WiFiDirectState.hpp"

#include "publishing/StatePublisher.hpp"

namespace oz::services {

namespace {

using W = WiFiDirectState;
using C = Columns<WiFiDirectState>;

const QString DeviceList = QStringLiteral("device_list");

const WordList<W::Role> &roles()
{
    static const WordList<W::Role> words{
        {W::Role::GroupOwner, "GO", "owner"}, {W::Role::Client, "client", "client"}};
    return words;
}

enum class Connection { Disconnected, Connecting, Connected };

const WordList<Connection> &connections()
{
    static const WordList<Connection> words{
        {Connection::Disconnected, "disconnected", "disconnected"},
        {Connection::Connecting, "connecting", "connecting"},
        {Connection::Connected, "connected", "connected"},
    };
    return words;
}

Connection connectionOf(const W &state)
{
    if (state.group)
        return Connection::Connected;
    return state.connecting ? Connection::Connecting : Connection::Disconnected;
}

QVariantMap mapOf(const WiFiDirectState::Peer &peer)
{
    QVariantMap map{{QStringLiteral("mac_addr"), peer.address}, {QStringLiteral("name"), peer.name},
        {QStringLiteral("type"), peer.type}};
    insertKnown(&map, QStringLiteral("ssid"), peer.ssid);
    insertKnown(&map, QStringLiteral("go_mac_address"), peer.ownerAddress);
    insertKnown(&map, QStringLiteral("wfd_device_info"), peer.displayInfo);
    return map;
}

QVariantMap mapOf(const WiFiDirectState::ConnectedPeer &peer)
{
    return {{QStringLiteral("mac_addr"), peer.address}, {QStringLiteral("name"), peer.name},
        {QStringLiteral("type"), peer.type}, {QStringLiteral("role"), publishedFor(roles(), peer.role)},
        {QStringLiteral("ip_addr"), peer.ipAddress}};
}

template <typename Peer>
QVariantMap listOf(const QList<Peer> &peers)
{
    QVariantList list;
    for (const Peer &peer : peers)
        list.append(mapOf(peer));
    return {{DeviceList, list}};
}

// A value of the group, while there is one.
Column<W> ofGroup(QString W::Group::*member)
{
    return C::text([member](const W &state) {
        return state.group ? std::optional((*state.group).*member) : std::nullopt;
    }).asPrivate();
}

std::optional<W::Role> roleOf(const W &state)
{
    return state.group ? std::optional(state.group->role) : std::nullopt;
}

// A list of peers, of which conditions see how many there are.
template <typename Peer>
Column<W> peers(QList<Peer> W::*member)
{
    return C::custom(
        {ValueType::Number}, [member](const W &state) { return QVariant(listOf(state.*member)); },
        [](const QVariant &published) {
            return published.isValid() ? QVariant(published.toMap().value(DeviceList).toList().size())
                                       : QVariant();
        });
}

QVariant availabilityOf(const W &state)
{
    return state.availability ? QVariant(int(*state.availability)) : QVariant();
}

} // namespace

const Fields<WiFiDirectState> &wifiDirectFields()
{
    static const Fields<WiFiDirectState> fields(QStringLiteral("/pps/services/wifi_p2p/manager/status"),
        {
            {"", "p2p_mgr_enabled", C::custom({}, availabilityOf), ""},
            {"scanning", "scanning", C::truth(&W::scanning), "whether it is looking for peers"},
            {"", "last_discover_update", C::number(&W::lastDiscovery), ""},
            {"connection", "connection/status", C::words(connectionOf, connections()),
                "the state of the connection with a group"},
            {"role", "connection/role", C::words(roleOf, roles()), "the phone's role in the group"},
            {"", "connection/network_if", ofGroup(&W::Group::interface), ""},
            {"", "connection/ssid", ofGroup(&W::Group::ssid), ""},
            {"", "connection/go_mac_addr", ofGroup(&W::Group::ownerAddress), ""},
            {"", "connection/go_ip_addr", ofGroup(&W::Group::ownerIpAddress), ""},
            {"", "connection/password", ofGroup(&W::Group::password), ""},
            {"visible", "discovered_devices", peers(&W::visible), "how many peers are in sight"},
            {"members", "connected_devices", peers(&W::connected), "how many peers are in the group"},
        },
        0640);
    return fields;
}

std::vector<AskedRequest> wifiDirectRequests()
{
    const auto named = [](const char *name, const char *message, const char *help,
                           const QList<AskedRequest::Part> &parts = {}) {
        return AskedRequest::named(name, WiFiDirectControl, message, help, parts);
    };
    return {
        named("scan", "wifi_p2p_scan_and_listen", "to look for peers"),
        named("connect", "wifi_p2p_connect", "to connect with a peer",
            {{QStringLiteral("address"), {ValueType::Text}, QStringLiteral("addr")}}),
        named("cancel-connect", "wifi_p2p_cancel_connect", "to stop connecting"),
        named("start-session", "wifi_p2p_start_session", "to begin a session"),
        named("stop-session", "wifi_p2p_stop_session", "to end a session"),
    };
}

} // namespace oz::services
