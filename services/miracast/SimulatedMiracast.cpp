#include "miracast/SimulatedMiracast.hpp"

#include "display/SimulatedDisplays.hpp"
#include "hardware/SimulatedHardware.hpp"
#include "source/Error.hpp"

#include <QUuid>

namespace oz::services {

namespace {

using Application = MiracastState::Application;
using Stop = MiracastState::Stop;

// In the phone's file, and of what is saved.
const QString Sinks = QStringLiteral("sinks");
constexpr int FirstSink = 0x201; // at the end of its hardware address

} // namespace

SimulatedMiracast::SimulatedMiracast(const JsonNode &section, SimulatedParts &phone)
    : m_displays(phone.part<SimulatedDisplays>()),
      m_supported(phone.part<SimulatedHardware>()->hasMiracast()),
      m_stop(m_supported ? Stop::None : Stop::NotSupported), m_scanning(phone.clock()),
      m_connecting(phone.clock())
{
    read(section, settings({}), {Sinks});
    m_sinks.read(section, QStringLiteral("miracast"), Sinks, FirstSink);

    connect(&m_scanning, &PhoneTimer::timeout, this, &SimulatedMiracast::finishScan);
    connect(&m_connecting, &PhoneTimer::timeout, this, &SimulatedMiracast::finishConnecting);
    connect(m_displays.get(), &DisplaySource::changed, this, &SimulatedMiracast::onDisplaysChanged);
    tell();
}

void SimulatedMiracast::beginSession(const QString &key)
{
    const Known &known = m_sinks.at(key);
    const int display = m_displays->addWireless(wirelessDisplayName(known.sink.name), known.size());
    m_session = Running{key, QUuid::createUuid().toString(QUuid::WithoutBraces), display};
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

QString SimulatedMiracast::visibleAt(const QString &address) const
{
    return m_sinks.withAddress(m_visible, address);
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
    for (const QString &key : m_sinks.keys()) {
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
    QVariantMap saved{{Sinks, m_sinks.saved()}, {QStringLiteral("visible"), m_visible},
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
    m_sinks.restore(saved.value(Sinks).toMap());
    m_visible = m_sinks.knownOf(saved.value(QStringLiteral("visible")));
    m_application.reset();
    m_session.reset();
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
        for (const QString &each : m_sinks.keys())
            m_displays->removeWireless(wirelessDisplayName(m_sinks.at(each).name()));
    }
    tell();
}

} // namespace oz::services
