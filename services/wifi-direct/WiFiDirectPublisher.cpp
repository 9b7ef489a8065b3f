#include "wifi-direct/WiFiDirectPublisher.hpp"

#include <cerrno>

namespace oz::services {

WiFiDirectPublisher::WiFiDirectPublisher(const QString &facility, WiFiDirectSource &source, Tree &tree)
    : FieldsPublisher(facility, source, tree, {&wifiDirectFields()}, Unfollowed()),
      m_control(tree, WiFiDirectControl, requests(), &source)
{
    follow();
    m_control.start(0660);
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
