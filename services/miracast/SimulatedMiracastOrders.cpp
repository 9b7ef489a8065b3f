// The settings and verbs of the simulated wireless displays.

#include "miracast/SimulatedMiracast.hpp"

#include "source/Error.hpp"

namespace oz::services {

namespace {

using Stop = MiracastState::Stop;

const QString Comes = QStringLiteral("sink-appears");
const QString Goes = QStringLiteral("sink-goes");
constexpr int WiFiCode = 6; // the first of the verb "stop" for failures of Wi-Fi Direct

// The meaning of the codes of the verb "stop".
Stop stopOf(int code)
{
    static const QMap<int, Stop> codes{{2, Stop::Application}, {4, Stop::NotSupported}, {5, Stop::Policy}};
    return code >= WiFiCode ? Stop::WiFi : codes.value(code, Stop::Internal);
}

} // namespace

const Settings<SimulatedMiracast> &SimulatedMiracast::table()
{
    using M = SimulatedMiracast;
    using C = SettingColumns<SimulatedMiracast>;
    static const Settings<SimulatedMiracast> table{
        {"scan-seconds", C::seconds(&M::m_scanTime, 0, 3'600), 3, "how long a scan takes"},
        {"connect-seconds", C::seconds(&M::m_connectTime, 0, 3'600), 2,
            "how long it takes to connect, or to fail"},
    };
    return table;
}

const Settings<SimulatedMiracast::Known> &SimulatedMiracast::Known::table()
{
    using K = Known;
    using C = SettingColumns<Known>;
    constexpr double mostPixels = 65535;
    static const auto of = [](auto member) {
        return [member](auto &known) -> auto &
        {
            return known.sink.*member;
        };
    };
    static const Settings<Known> table{
        {"name", C::text(of(&MiracastState::Sink::name)), QString(),
            "the name that it shows; its key in the file if left out"},
        {"address", C::hardwareAddress(of(&MiracastState::Sink::address)), QString(),
            "its hardware address; made of its place in the file if left out"},
        {"type", C::text(of(&MiracastState::Sink::type)), QStringLiteral("7-0050F204-1"),
            "its type in Wi-Fi Protected Setup: category, organisation and sub-category"},
        {"in-range", C::truth(&K::inRange).kept(), true, "whether it is in range"},
        {"accepts", C::truth(&K::accepts), true, "whether it accepts connections"},
        {"pin", C::textOrNone(&K::pin).asPrivate(), {}, "the PIN that it wants, if any"},
        {"width", C::number(&K::width, 1, mostPixels, "px"), 1280, "the width of a session's picture"},
        {"height", C::number(&K::height, 1, mostPixels, "px"), 720, "the height of a session's picture"},
    };
    return table;
}

namespace {

SimChoice stopCodes()
{
    SimChoice codes{QStringLiteral("1 2 4 5 6 7 8 9").split(u' ')};
    codes.titles = {{QStringLiteral("1"), QStringLiteral("internally")},
        {QStringLiteral("2"), QStringLiteral("by an application")},
        {QStringLiteral("4"), QStringLiteral("no support")},
        {QStringLiteral("5"), QStringLiteral("by policy")},
        {QStringLiteral("6"), QStringLiteral("Wi-Fi Direct fails (6)")},
        {QStringLiteral("7"), QStringLiteral("Wi-Fi Direct fails (7)")},
        {QStringLiteral("8"), QStringLiteral("Wi-Fi Direct fails (8)")},
        {QStringLiteral("9"), QStringLiteral("Wi-Fi Direct fails (9)")}};
    return codes;
}

} // namespace

std::vector<SimVerb> SimulatedMiracast::verbs(const QString &)
{
    const QString sink = QStringLiteral("SINK");
    const QMap<QString, SimChoice> sinks{{sink, {m_sinks.keys()}}};
    const QString states = QStringLiteral("playing|paused|none");
    return {
        SimVerb{Comes, {sink}, QStringLiteral("brings a sink into range; scans bring it into sight"),
            [this](const QStringList &words) {
                m_sinks.called(words[0]).inRange = true;
                tell();
            }}
            .with({}, sinks),
        SimVerb{Goes, {sink},
            QStringLiteral("takes a sink out of range, which ends its session; a scan finds it missing"),
            [this](const QStringList &words) {
                m_sinks.called(words[0]).inRange = false;
                if (m_session && m_session->key == words[0])
                    (void)endConnection(Result::Success);
                tell();
            }}
            .with({}, sinks),
        SimVerb{QStringLiteral("stop"), {QStringLiteral("CODE")},
            QStringLiteral(
                "stops the service: 1 internally, 2 by an application, 4 for lack of support, 5 by "
                "policy, 6 to 9 as Wi-Fi Direct fails"),
            [this](const QStringList &words) {
                const int code = SimArgument::integer(words[0], 1, 9);
                stop(stopOf(code), std::max(code - WiFiCode, 0));
            }}
            .with({}, {{QStringLiteral("CODE"), stopCodes()}}),
        SimVerb::state(
            QStringLiteral("start"), QStringLiteral("starts the service again"),
            [this] {
                if (!m_supported)
                    throw Error(QStringLiteral("the phone has no Miracast"));
                m_stop = Stop::None;
                tell();
            },
            [this] { return m_stop == Stop::None; }),
        {QStringLiteral("sight"), {QStringLiteral("[SINK,...]")},
            QStringLiteral("has these sinks in range and sight, and no others"),
            [this](const QStringList &words) { see(words.value(0).split(u',', Qt::SkipEmptyParts)); }},
        {QStringLiteral("connecting"), {sink}, QStringLiteral("is connecting a sink, and stays so"),
            [this](const QStringList &words) {
                (void)m_sinks.called(words[0]);
                (void)endConnection(Result::Cancelled);
                m_attempt = Attempt{words[0], {}, [](Result) {}};
                tell();
            }},
        SimVerb{QStringLiteral("session"), {states, QStringLiteral("[SINK]")},
            QStringLiteral("shows the screen on a sink, or ends that"),
            [this](const QStringList &words) { enterSession(words[0], words.value(1)); }}
            .with({},
                {{states,
                    {.followed = {QStringLiteral("playing"), QStringLiteral("paused")},
                        .alone = {QStringLiteral("none")}}}}),
    };
}

void SimulatedMiracast::see(const QStringList &keys)
{
    for (const QString &key : keys)
        (void)m_sinks.called(key);
    m_sinks.setInRange(keys);
    m_visible = keys;
    tell();
}

void SimulatedMiracast::enterSession(const QString &word, const QString &key)
{
    const QStringList words{QStringLiteral("playing"), QStringLiteral("paused"), QStringLiteral("none")};
    const auto place = SimArgument::oneOf(word, words);
    if ((place == 2) != key.isEmpty())
        throw Error(QStringLiteral("a session is with a sink, and 'none' is with none"));
    if (!key.isEmpty())
        (void)m_sinks.called(key);
    if (place == 2 || !m_session || m_session->key != key)
        (void)endConnection(Result::Cancelled);
    if (place != 2 && !m_session)
        beginSession(key);
    if (m_session)
        m_session->paused = place == 1;
    tell();
}

SimulatedPart::Neighbourhood SimulatedMiracast::neighbourhood() const
{
    return m_sinks.neighbourhood(Comes, Goes);
}

} // namespace oz::services
