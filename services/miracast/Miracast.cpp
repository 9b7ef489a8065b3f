#include "miracast/Miracast.hpp"

namespace oz::services {

namespace {

using M = MiracastState;
using C = Columns<MiracastState>;
using Stop = MiracastState::Stop;

int stopReasonOf(const MiracastState &state)
{
    switch (state.stop) {
    case Stop::None:
        return 0;
    case Stop::Internal:
        return 1;
    case Stop::Application:
        return 2;
    case Stop::NotSupported:
        return 4;
    case Stop::Policy:
        return 5;
    case Stop::WiFi:
        return 6 + state.wiFiFailure;
    }
    return 1;
}

QVariantMap attributesOf(const M::Sink &sink)
{
    return {{QStringLiteral("name"), sink.name}, {QStringLiteral("mac"), sink.address},
        {QStringLiteral("type"), sink.type}};
}

// Named so that their order is that of the list.
QVariant sinksOf(const M &state)
{
    QVariantMap attributes;
    for (const M::Sink &sink : state.sinks) {
        attributes.insert(
            QStringLiteral("sink%1").arg(attributes.size() + 1, 4, 10, QChar(u'0')), attributesOf(sink));
    }
    return attributes;
}

QVariant applicationOf(const M &state)
{
    if (!state.application)
        return {};
    return QVariantMap{{QStringLiteral("name"), state.application->name},
        {QStringLiteral("persistent"), state.application->persistent}};
}

Column<M> resolution(int (QSize::*part)() const)
{
    return C::number([part](const M &state) { return (state.resolution.*part)(); }, "px");
}

} // namespace

const Fields<MiracastState> &miracastFields()
{
    using Connection = M::Connection;
    using Session = M::Session;
    static const Fields<MiracastState> fields(QStringLiteral("/pps/services/miracast/status"),
        {
            {"running", "service_status",
                C::truth([](const M &state) { return state.stop == Stop::None; }, "RUNNING", "STOPPED"),
                "whether the service runs"},
            {"stop-reason", "service_stop_reason", C::number(stopReasonOf),
                "the code of why it does not run; 0 while it runs"},
            {"connection", "sink_state",
                C::words(&M::connection,
                    {{Connection::Disconnected, "DISCONNECTED", "disconnected"},
                        {Connection::Connecting, "CONNECTING", "connecting"},
                        {Connection::Connected, "CONNECTED", "connected"}}),
                "the state of the connection with a sink"},
            {"session", "session",
                C::words(&M::session,
                    {{Session::Stopped, "STOPPED", "stopped"}, {Session::Playing, "PLAYING", "playing"},
                        {Session::Paused, "PAUSED", "paused"}}),
                "the state of the session"},
            {"", "session_id", C::text(&M::sessionId), ""},
            {"", "sink_device",
                C::custom({}, [](const M &state) { return QVariant(attributesOf(state.sink)); }), ""},
            {"sink", "sink_device/name", C::custom({ValueType::Text}, {}), "the sink's name"},
            {"width", "sink_resolution/width", resolution(&QSize::width),
                "the width of the session's picture; 0 for none"},
            {"height", "sink_resolution/height", resolution(&QSize::height),
                "the height of the session's picture; 0 for none"},
            {"", "app_context", C::custom({}, applicationOf), ""},
        });
    return fields;
}

const Fields<MiracastState> &sinkFields()
{
    static const auto count = [](const QVariant &attributes) { return QVariant(attributes.toMap().size()); };
    static const Fields<MiracastState> fields(QStringLiteral("/pps/services/miracast/sinks"),
        {
            {"sinks", "", C::custom({ValueType::Number}, sinksOf, count), "how many sinks are in sight"},
        });
    return fields;
}

std::vector<AskedRequest> miracastRequests()
{
    const auto named = [](const char *name, const char *message, const char *help,
                           const QList<AskedRequest::Part> &parts = {}) {
        return AskedRequest::named(name, MiracastControl, message, help, parts);
    };
    return {
        named("scan", "miracast_sink_discover", "to look for sinks"),
        named("connect", "miracast_session_start", "to show the screen on a sink",
            {{QStringLiteral("address"), {ValueType::Text}, QStringLiteral("sink_mac")}}),
        named("disconnect", "miracast_session_stop", "to end the session"),
        named("pause", "miracast_session_pause", "to pause the session"),
        named("resume", "miracast_session_resume", "to resume the session"),
        named("shutdown", "miracast_shutdown", "to end the service"),
        named("warmup", "miracast_app_context", "to name the application",
            {{QStringLiteral("name"), {ValueType::Text}}}),
    };
}

std::optional<Display> MiracastSource::displayNow() const
{
    if (!isKnown() || state()->connection != MiracastState::Connection::Connected)
        return std::nullopt;
    Display display;
    display.name = wirelessDisplayName(state()->sink.name);
    display.kind = displayKind(false);
    display.attached = display.detachable = true;
    display.size = state()->resolution;
    return display;
}

std::optional<bool> MiracastSource::isMiracastSupported() const
{
    return isKnown() ? std::optional(state()->supported) : std::nullopt;
}

QString wirelessDisplayName(const QString &sink)
{
    QString name = QLatin1String("miracast-") + sink;
    while (name.toUtf8().size() > MaxDisplayNameSize)
        name.chop(name.back().isLowSurrogate() ? 2 : 1);
    return name;
}

} // namespace oz::services
