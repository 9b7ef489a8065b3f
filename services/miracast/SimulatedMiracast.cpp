#include "miracast/SimulatedMiracast.hpp"

#include "display/SimulatedDisplays.hpp"
#include "hardware/SimulatedHardware.hpp"
#include "phone/ShippedPhone.hpp"
#include "source/Error.hpp"

#include <QUuid>

namespace oz::services {

namespace {

using Application = MiracastState::Application;
using Stop = MiracastState::Stop;

// In the phone's file, and of what is saved.
const QString Sinks = QStringLiteral("sinks");
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

const Settings<SimulatedMiracast::Known> &SimulatedMiracast::sinkTable()
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

SimulatedMiracast::SimulatedMiracast(const JsonNode &section, SimulatedParts &phone)
    : m_displays(phone.part<SimulatedDisplays>()),
      m_supported(phone.part<SimulatedHardware>()->hasMiracast()),
      m_stop(m_supported ? Stop::None : Stop::NotSupported), m_scanning(phone.clock()),
      m_connecting(phone.clock())
{
    read(section, settings({}), {Sinks});
    const JsonNode all =
        (section.contains(Sinks) ? section : shippedSection(QStringLiteral("miracast"))).map(Sinks);
    for (const auto &member : all.members())
        readSink(member.first, all.map(member.first));

    connect(&m_scanning, &PhoneTimer::timeout, this, &SimulatedMiracast::finishScan);
    connect(&m_connecting, &PhoneTimer::timeout, this, &SimulatedMiracast::finishConnecting);
    connect(m_displays.get(), &DisplaySource::changed, this, &SimulatedMiracast::onDisplaysChanged);
    tell();
}

void SimulatedMiracast::readSink(const QString &key, const JsonNode &node)
{
    const QString address = QStringLiteral("address");
    Known known;
    std::vector<Setting> settings = sinkTable().of(&known);
    const QString place = QString::number(0x200 + m_keys.size() + 1, 16).rightJustified(4, u'0');
    for (Setting &setting : settings) {
        if (setting.key == u"name")
            setting.initial = key;
        else if (setting.key == address)
            setting.initial =
                QString(QLatin1String("02:00:00:00:") + place.first(2) + u':' + place.sliced(2));
    }
    read(node, settings);
    for (const auto &[other, sink] : m_sinks) {
        // Whatever its case, it is one address.
        if (sink.sink.address.compare(known.sink.address, Qt::CaseInsensitive) == 0)
            node.fail(QLatin1String("is that of ") + other, address);
    }
    m_keys.append(key);
    m_sinks.emplace(key, known);
}

std::vector<SimVerb> SimulatedMiracast::verbs(const QString &)
{
    const QString sink = QStringLiteral("SINK");
    const QMap<QString, SimChoice> sinks{{sink, {m_keys}}};
    return {
        SimVerb{Comes, {sink}, QStringLiteral("brings a sink into range; scans bring it into sight"),
            [this](const QStringList &words) {
                sinkCalled(words[0]).inRange = true;
                tell();
            }}
            .with({}, sinks),
        SimVerb{Goes, {sink},
            QStringLiteral("takes a sink out of range, which ends its session; a scan finds it missing"),
            [this](const QStringList &words) {
                sinkCalled(words[0]).inRange = false;
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
            .with({}, {{QStringLiteral("CODE"), {QStringLiteral("1 2 4 5 6 7 8 9").split(u' ')}}}),
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
                (void)sinkCalled(words[0]);
                (void)endConnection(Result::Cancelled);
                m_attempt = Attempt{words[0], {}, [](Result) {}};
                tell();
            }},
        {QStringLiteral("session"), {QStringLiteral("playing|paused|none"), QStringLiteral("[SINK]")},
            QStringLiteral("shows the screen on a sink, or ends that"),
            [this](const QStringList &words) { enterSession(words[0], words.value(1)); }},
    };
}

void SimulatedMiracast::see(const QStringList &keys)
{
    for (const QString &key : keys)
        (void)sinkCalled(key);
    for (auto &[key, known] : m_sinks)
        known.inRange = keys.contains(key);
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
        (void)sinkCalled(key);
    if (place == 2 || !m_session || m_session->key != key)
        (void)endConnection(Result::Cancelled);
    if (place != 2 && !m_session)
        beginSession(key);
    if (m_session)
        m_session->paused = place == 1;
    tell();
}

void SimulatedMiracast::beginSession(const QString &key)
{
    const Known &known = m_sinks.at(key);
    const int display = m_displays->addWireless(wirelessDisplayName(known.sink.name), known.size());
    m_session = Running{key, QUuid::createUuid().toString(QUuid::WithoutBraces), display};
}

SimulatedPart::Neighbourhood SimulatedMiracast::neighbourhood() const
{
    Neighbourhood around{Comes, Goes, {}};
    for (const QString &key : m_keys)
        around.neighbours.append({key, m_sinks.at(key).sink.name, m_sinks.at(key).inRange});
    return around;
}

void SimulatedMiracast::tell()
{
    save();
    MiracastState state;
    state.supported = m_supported;
    state.stop = m_stop;
    state.wiFiFailure = m_wiFiFailure;
    state.application = m_application;
    for (const QString &key : m_visible)
        state.sinks.append(m_sinks.at(key).sink);
    if (m_attempt) {
        state.connection = MiracastState::Connection::Connecting;
        state.sink = m_sinks.at(m_attempt->key).sink;
    } else if (m_session) {
        state.connection = MiracastState::Connection::Connected;
        state.sink = m_sinks.at(m_session->key).sink;
        state.session = m_session->paused ? MiracastState::Session::Paused : MiracastState::Session::Playing;
        state.sessionId = m_session->id;
        if (const Display *display = m_displays->find(m_session->display))
            state.resolution = display->size;
    }
    know(state);
}

void SimulatedMiracast::scan(const Done &done)
{
    if (const Result refused = obstacle(); refused != Result::Success)
        return done(refused);
    wake();
    m_scans.append(done);
    if (!m_scanning.isActive())
        m_scanning.start(m_scanTime);
}

void SimulatedMiracast::connectSink(const QString &address, const QString &pin, const Done &done)
{
    if (const Result refused = obstacle(); refused != Result::Success)
        return done(refused);
    wake();
    if (m_attempt || m_session)
        return done(Result::InvalidRequest);
    const QString key = visibleAt(address);
    if (key.isEmpty())
        return done(Result::SinkNotFound);
    m_attempt = Attempt{key, pin, done};
    m_connecting.start(m_connectTime);
    tell();
}

void SimulatedMiracast::disconnectSink(const Done &done)
{
    if (const Result refused = obstacle(); refused != Result::Success)
        return done(refused);
    if (!endConnection(Result::Cancelled))
        return done(Result::InvalidRequest);
    tell();
    done(Result::Success);
}

void SimulatedMiracast::pause(const Done &done)
{
    setPaused(true, done);
}

void SimulatedMiracast::resume(const Done &done)
{
    setPaused(false, done);
}

void SimulatedMiracast::setPaused(bool paused, const Done &done)
{
    if (const Result refused = obstacle(); refused != Result::Success)
        return done(refused);
    if (!m_session || m_session->paused == paused)
        return done(Result::InvalidRequest);
    m_session->paused = paused;
    tell();
    done(Result::Success);
}

void SimulatedMiracast::shutdown(const Done &done)
{
    if (const Result refused = obstacle(); refused != Result::Success)
        return done(refused);
    if (m_application && !m_application->persistent)
        m_application.reset();
    stop(Stop::Application, 0);
    done(Result::Success);
}

void SimulatedMiracast::warmUp(const Application &application, const Done &done)
{
    if (const Result refused = obstacle(); refused != Result::Success)
        return done(refused);
    wake();
    m_application = application;
    tell();
    done(Result::Success);
}

SimulatedMiracast::Known &SimulatedMiracast::sinkCalled(const QString &key)
{
    return m_sinks.at(m_keys[SimArgument::oneOf(key, m_keys)]);
}

QString SimulatedMiracast::visibleAt(const QString &address) const
{
    for (const QString &key : m_visible) {
        if (m_sinks.at(key).sink.address.compare(address, Qt::CaseInsensitive) == 0)
            return key;
    }
    return {};
}

// The reason to refuse any request; a service that an application has shut down starts with the next.
MiracastSource::Result SimulatedMiracast::obstacle() const
{
    if (!m_supported)
        return Result::ServiceFailed;
    switch (m_stop) {
    case Stop::None:
    case Stop::Application:
        return Result::Success;
    case Stop::Policy:
        return Result::ForbiddenByPolicy;
    case Stop::WiFi:
        return Result::WiFiFailed;
    default:
        return Result::ServiceFailed;
    }
}

void SimulatedMiracast::wake()
{
    if (m_stop == Stop::None)
        return;
    m_stop = Stop::None;
    tell();
}

void SimulatedMiracast::finishScan()
{
    m_visible.clear();
    for (const QString &key : m_keys) {
        if (m_sinks.at(key).inRange)
            m_visible.append(key);
    }
    tell();
    for (const Done &done : std::exchange(m_scans, {}))
        done(Result::Success);
}

void SimulatedMiracast::finishConnecting()
{
    const Attempt attempt = *std::exchange(m_attempt, std::nullopt);
    const Known &known = m_sinks.at(attempt.key);
    Result result = Result::Success;
    if (!known.inRange)
        result = Result::SinkLost;
    else if (!known.accepts)
        result = Result::SinkRefused;
    else if (!known.pin.isEmpty() && attempt.pin.isEmpty())
        result = Result::PinRequired;
    else if (!known.pin.isEmpty() && attempt.pin != known.pin)
        result = Result::PinIncorrect;
    if (result == Result::Success)
        beginSession(attempt.key);
    tell();
    attempt.done(result);
}

// Ends the session, or what is being connected, whose request is answered with the result; whether there was
// any.
bool SimulatedMiracast::endConnection(Result result)
{
    m_connecting.stop();
    if (const auto attempt = std::exchange(m_attempt, std::nullopt)) {
        attempt->done(result);
        return true;
    }
    if (const auto session = std::exchange(m_session, std::nullopt)) {
        m_displays->remove(session->display);
        return true;
    }
    return false;
}

void SimulatedMiracast::stop(Stop reason, int wiFiFailure)
{
    m_stop = reason;
    m_wiFiFailure = wiFiFailure;
    const Result result = reason == Stop::Application ? Result::Cancelled : obstacle();
    (void)endConnection(result);
    m_scanning.stop();
    for (const Done &done : std::exchange(m_scans, {}))
        done(result);
    tell();
}

// The session's display may have got another size, or be gone.
void SimulatedMiracast::onDisplaysChanged()
{
    if (!m_session)
        return;
    if (!m_displays->find(m_session->display))
        m_session.reset();
    tell();
}

QVariantMap SimulatedMiracast::saved()
{
    QVariantMap sinks;
    for (auto &[key, known] : m_sinks)
        sinks.insert(key, savedOf(sinkTable().of(&known)));
    QVariantMap saved{{Sinks, sinks}, {QStringLiteral("visible"), m_visible},
        {QStringLiteral("stop"), int(m_stop)}, {QStringLiteral("wifi-failure"), m_wiFiFailure}};
    if (m_application) {
        saved.insert(QStringLiteral("application"),
            QVariantMap{{QStringLiteral("name"), m_application->name},
                {QStringLiteral("persistent"), m_application->persistent}});
    }
    if (m_session) {
        saved.insert(QStringLiteral("session"),
            QVariantMap{{QStringLiteral("sink"), m_session->key}, {QStringLiteral("id"), m_session->id},
                {QStringLiteral("display"), m_session->display},
                {QStringLiteral("paused"), m_session->paused}});
    }
    return saved;
}

// A scan, or a sink that was being connected, has ended with the daemon.
void SimulatedMiracast::restore(const QVariantMap &saved)
{
    const QVariantMap sinks = saved.value(Sinks).toMap();
    for (auto &[key, known] : m_sinks)
        (void)restoreTo(sinkTable().of(&known), sinks.value(key).toMap());
    m_visible.clear();
    m_application.reset();
    m_session.reset();
    for (const QString &key : saved.value(QStringLiteral("visible")).toStringList()) {
        if (m_sinks.contains(key) && !m_visible.contains(key))
            m_visible.append(key);
    }
    m_stop = Stop(std::clamp(saved.value(QStringLiteral("stop")).toInt(), 0, int(Stop::WiFi)));
    m_wiFiFailure = std::clamp(saved.value(QStringLiteral("wifi-failure")).toInt(), 0, 3);
    if (const QVariantMap application = saved.value(QStringLiteral("application")).toMap();
        !application.isEmpty()) {
        m_application = Application{application.value(QStringLiteral("name")).toString(),
            application.value(QStringLiteral("persistent")).toBool()};
    }
    const QVariantMap session = saved.value(QStringLiteral("session")).toMap();
    const QString key = session.value(QStringLiteral("sink")).toString();
    const int display = session.value(QStringLiteral("display")).toInt();
    if (m_sinks.contains(key) && m_displays->find(display)) {
        m_session = Running{key, session.value(QStringLiteral("id")).toString(), display,
            session.value(QStringLiteral("paused")).toBool()};
    } else {
        // The daemon may have died between what the displays and what this part saved.
        for (const auto &[name, known] : m_sinks)
            m_displays->removeWireless(wirelessDisplayName(known.sink.name));
    }
    tell();
}

} // namespace oz::services
