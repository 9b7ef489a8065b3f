#include "wifidirect/WiFiDirectPublisher.hpp"

#include <cerrno>

namespace oz::services {

namespace {

using Source = WiFiDirectSource;

const QString ManagerPpsDir = QStringLiteral("/pps/services/wifi_p2p/manager/");
const QString DeviceList = QStringLiteral("device_list");

QString roleText(Source::Role role)
{
    return role == Source::Role::GroupOwner ? QStringLiteral("GO") : QStringLiteral("client");
}

QVariantMap mapOf(const Source::Peer &peer)
{
    QVariantMap map{{QStringLiteral("mac_addr"), peer.address}, {QStringLiteral("name"), peer.name},
        {QStringLiteral("type"), peer.type}};
    insertKnown(&map, QStringLiteral("ssid"), peer.ssid);
    insertKnown(&map, QStringLiteral("go_mac_address"), peer.ownerAddress);
    insertKnown(&map, QStringLiteral("wfd_device_info"), peer.displayInfo);
    return map;
}

QVariantMap mapOf(const Source::ConnectedPeer &peer)
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

QVariantMap connectionOf(const Source::State &state)
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

WiFiDirectPublisher::WiFiDirectPublisher(WiFiDirectSource &source)
    : m_source(source), m_status(ManagerPpsDir + QLatin1String("status"), 0640),
      m_control(
          ManagerPpsDir + QLatin1String("control"),
          [this](const Request &request) { return onRequest(request); },
          [this](const Request &request) { return m_source.takeMishap(request.message); })
{
    connect(&source, &WiFiDirectSource::changed, this, &WiFiDirectPublisher::publish);
    publish();
    m_control.start(0660);
}

void WiFiDirectPublisher::publish()
{
    const auto state = m_source.state();
    if (!state)
        return;
    QVariantMap attributes{
        {QStringLiteral("p2p_mgr_enabled"), int(state->availability)},
        {QStringLiteral("scanning"), state->scanning},
        {QStringLiteral("connection"), connectionOf(*state)},
        {QStringLiteral("discovered_devices"), listOf(state->visible)},
        {QStringLiteral("connected_devices"), listOf(state->connected)},
    };
    insertKnown(&attributes, QStringLiteral("last_discover_update"), state->lastDiscovery);
    m_status.publish(attributes);
}

Reply WiFiDirectPublisher::onRequest(const Request &request)
{
    const QVariantMap argument = request.data.toMap();
    const auto textOf = [&argument](
                            const char *name) { return argument.value(QLatin1String(name)).toString(); };
    Source::Result result;
    QString answered;
    if (request.message == u"wifi_p2p_scan_and_listen") {
        result = m_source.scan();
    } else if (request.message == u"wifi_p2p_connect") {
        result = connectPeer(argument);
    } else if (request.message == u"wifi_p2p_cancel_connect") {
        result = m_source.cancelConnect();
    } else if (request.message == u"wifi_p2p_start_session") {
        result = m_source.startSession();
        answered = QStringLiteral("session_key");
    } else if (request.message == u"wifi_p2p_stop_session") {
        result = m_source.stopSession(textOf("session_key"));
    } else if (request.message == u"wifi_p2p_get_ip_address") {
        result = m_source.ipAddress(textOf("addr"));
        answered = QStringLiteral("ip_address");
    } else {
        return Reply::failure(EINVAL,
            QLatin1String("unknown request '") + request.message
                + QLatin1String("'; known are wifi_p2p_scan_and_listen, wifi_p2p_connect, "
                                "wifi_p2p_cancel_connect, wifi_p2p_start_session, wifi_p2p_stop_session, "
                                "wifi_p2p_get_ip_address"));
    }
    if (result.error)
        return Reply::failure(result.error, result.errorText);
    return {answered.isEmpty() ? QVariant() : QVariantMap{{answered, result.text}}, 0, {}};
}

WiFiDirectSource::Result WiFiDirectPublisher::connectPeer(const QVariantMap &argument)
{
    static const QHash<QString, Source::Intent> intents{{QStringLiteral("GO"), Source::Intent::GroupOwner},
        {QStringLiteral("client"), Source::Intent::Client}, {QStringLiteral("any"), Source::Intent::Any}};
    static const QHash<int, Source::WpsMethod> methods{{0, Source::WpsMethod::PushButton},
        {2, Source::WpsMethod::RandomPin}, {3, Source::WpsMethod::PresetPin}};
    const auto intent = intents.constFind(argument.value(QStringLiteral("go_intent")).toString());
    bool isNumber = false;
    const auto method = methods.constFind(argument.value(QStringLiteral("wps_method")).toInt(&isNumber));
    if (intent == intents.cend() || !isNumber || method == methods.cend())
        return {{}, EINVAL, QStringLiteral("expected go_intent GO, client or any, and wps_method 0, 2 or 3")};
    const QString pin = argument.value(QStringLiteral("wps_pin")).toString();
    return m_source.connectPeer({argument.value(QStringLiteral("addr")).toString(), *intent, *method,
        pin == u"NULL" ? QString() : pin});
}

} // namespace oz::services
