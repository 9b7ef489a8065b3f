#include "wifi-direct/WiFiDirectPublisher.hpp"

#include <cerrno>

namespace oz::services {

namespace {

using State = WiFiDirectState;

const QString ManagerPpsDir = QStringLiteral("/pps/services/wifi_p2p/manager/");
const QString DeviceList = QStringLiteral("device_list");

QString roleText(State::Role role)
{
    return role == State::Role::GroupOwner ? QStringLiteral("GO") : QStringLiteral("client");
}

QVariantMap mapOf(const State::Peer &peer)
{
    QVariantMap map{{QStringLiteral("mac_addr"), peer.address}, {QStringLiteral("name"), peer.name},
        {QStringLiteral("type"), peer.type}};
    insertKnown(&map, QStringLiteral("ssid"), peer.ssid);
    insertKnown(&map, QStringLiteral("go_mac_address"), peer.ownerAddress);
    insertKnown(&map, QStringLiteral("wfd_device_info"), peer.displayInfo);
    return map;
}

QVariantMap mapOf(const State::ConnectedPeer &peer)
{
    return {{QStringLiteral("mac_addr"), peer.address}, {QStringLiteral("name"), peer.name},
        {QStringLiteral("type"), peer.type}, {QStringLiteral("role"), roleText(peer.role)},
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

QVariantMap connectionOf(const State &state)
{
    const QString status = QStringLiteral("status");
    if (!state.group)
        return {{status, state.connecting ? QStringLiteral("connecting") : QStringLiteral("disconnected")}};
    return {{status, QStringLiteral("connected")}, {QStringLiteral("network_if"), state.group->interface},
        {QStringLiteral("role"), roleText(state.group->role)}, {QStringLiteral("ssid"), state.group->ssid},
        {QStringLiteral("go_mac_addr"), state.group->ownerAddress},
        {QStringLiteral("go_ip_addr"), state.group->ownerIpAddress},
        {QStringLiteral("password"), state.group->password}};
}

} // namespace

WiFiDirectPublisher::WiFiDirectPublisher(const QString &facility, WiFiDirectSource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_status(tree, ManagerPpsDir + QLatin1String("status"), 0640),
      m_control(tree, ManagerPpsDir + QLatin1String("control"), requests(), &source)
{
    declare(m_status);
    follow();
    m_control.start(0660);
}

void WiFiDirectPublisher::publishState(const WiFiDirectState &state)
{
    QVariantMap attributes{
        {QStringLiteral("scanning"), state.scanning},
        {QStringLiteral("connection"), connectionOf(state)},
        {QStringLiteral("discovered_devices"), listOf(state.visible)},
        {QStringLiteral("connected_devices"), listOf(state.connected)},
    };
    if (state.availability)
        attributes.insert(QStringLiteral("p2p_mgr_enabled"), int(*state.availability));
    insertKnown(&attributes, QStringLiteral("last_discover_update"), state.lastDiscovery);
    m_status.publish(attributes);
}

RequestTable WiFiDirectPublisher::requests()
{
    constexpr auto trusted = RequestKind::For::Trusted;
    const auto textOf = [](const Request &request, const char *name) {
        return request.data.toMap().value(QLatin1String(name)).toString();
    };
    return {
        {QStringLiteral("wifi_p2p_scan_and_listen"), QStringLiteral("scan"),
            [this](const Request &, const Answer &answer) { source().scan(answer.toDone()); }},
        {QStringLiteral("wifi_p2p_connect"), QStringLiteral("connect"),
            [this](const Request &request, const Answer &answer) { connectPeer(request, answer); }, trusted},
        {QStringLiteral("wifi_p2p_cancel_connect"), QStringLiteral("cancel-connect"),
            [this](const Request &, const Answer &answer) { source().cancelConnect(answer.toDone()); },
            trusted},
        {QStringLiteral("wifi_p2p_start_session"), QStringLiteral("start-session"),
            [this](const Request &, const Answer &answer) {
                source().startSession(answer.toDone(QStringLiteral("session_key")));
            },
            trusted},
        {QStringLiteral("wifi_p2p_stop_session"), QStringLiteral("stop-session"),
            [this, textOf](const Request &request, const Answer &answer) {
                source().stopSession(textOf(request, "session_key"), answer.toDone());
            },
            trusted},
        {QStringLiteral("wifi_p2p_get_ip_address"), QStringLiteral("get-ip-address"),
            [this, textOf](const Request &request, const Answer &answer) {
                source().ipAddress(textOf(request, "addr"), answer.toDone(QStringLiteral("ip_address")));
            }},
    };
}

void WiFiDirectPublisher::connectPeer(const Request &request, const Answer &answer)
{
    using Intent = WiFiDirectSource::Intent;
    using Method = WiFiDirectSource::WpsMethod;
    static const QHash<QString, Intent> intents{{QStringLiteral("GO"), Intent::GroupOwner},
        {QStringLiteral("client"), Intent::Client}, {QStringLiteral("any"), Intent::Any}};
    static const QHash<int, Method> methods{
        {0, Method::PushButton}, {2, Method::RandomPin}, {3, Method::PresetPin}};
    const QVariantMap argument = request.data.toMap();
    const auto intent = intents.constFind(argument.value(QStringLiteral("go_intent")).toString());
    bool isNumber = false;
    const auto method = methods.constFind(argument.value(QStringLiteral("wps_method")).toInt(&isNumber));
    if (intent == intents.cend() || !isNumber || method == methods.cend()) {
        return answer(Reply::failure(
            EINVAL, QStringLiteral("expected go_intent GO, client or any, and wps_method 0, 2 or 3")));
    }
    const QString pin = argument.value(QStringLiteral("wps_pin")).toString();
    source().connectPeer({argument.value(QStringLiteral("addr")).toString(), *intent, *method,
                             pin == u"NULL" ? QString() : pin},
        answer.toDone());
}

} // namespace oz::services
