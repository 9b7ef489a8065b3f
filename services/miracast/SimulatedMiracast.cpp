#include "miracast/SimulatedMiracast.hpp"

#include "core/Error.hpp"
#include "core/ShippedPhone.hpp"
#include "display/SimulatedDisplays.hpp"
#include "hardware/SimulatedHardware.hpp"

#include <QUuid>

namespace oz::services {

namespace {

// The words of the verb fail-next.
QList<std::pair<QString, QString>> requestWords()
{
    return {{QStringLiteral("scan"), QStringLiteral("miracast_sink_discover")},
        {QStringLiteral("connect"), QStringLiteral("miracast_session_start")},
        {QStringLiteral("disconnect"), QStringLiteral("miracast_session_stop")},
        {QStringLiteral("pause"), QStringLiteral("miracast_session_pause")},
        {QStringLiteral("resume"), QStringLiteral("miracast_session_resume")},
        {QStringLiteral("shutdown"), QStringLiteral("miracast_shutdown")},
        {QStringLiteral("warmup"), QStringLiteral("miracast_app_context")}};
}

} // namespace

SimulatedMiracast::SimulatedMiracast(
    const JsonNode &section, const SimulatedHardware &hardware, SimulatedDisplays &displays)
    : m_displays(displays), m_supported(hardware.state()->miracast.value_or(false)),
      m_mishaps(
          requestWords(), {QStringLiteral("CODE"), -9999, -1}, {Mishap::AnswerLate, Mishap::NeverAnswer}),
      m_stopReason(m_supported ? NotStopped : NotSupported)
{
    const QString sinks = QStringLiteral("sinks");
    section.allowOnly({QStringLiteral("scan-seconds"), QStringLiteral("connect-seconds"), sinks});
    m_scanTime = section.seconds(QStringLiteral("scan-seconds"), 3);
    m_connectTime = section.seconds(QStringLiteral("connect-seconds"), 2);
    const JsonNode all = (section.contains(sinks) ? section : shippedSection(name())).map(sinks);
    for (const auto &member : all.members())
        readSink(member.first, all.map(member.first));

    m_scanning.setSingleShot(true);
    connect(&m_scanning, &QTimer::timeout, this, &SimulatedMiracast::finishScan);
    m_connecting.setSingleShot(true);
    connect(&m_connecting, &QTimer::timeout, this, &SimulatedMiracast::finishConnecting);
    connect(&displays, &DisplaySource::changed, this, &SimulatedMiracast::onDisplaysChanged);
}

void SimulatedMiracast::readSink(const QString &key, const JsonNode &node)
{
    constexpr int maxPixels = 65535;
    const QString address = QStringLiteral("address");
    node.allowOnly({QStringLiteral("name"), address, QStringLiteral("type"), QStringLiteral("in-range"),
        QStringLiteral("accepts"), QStringLiteral("pin"), QStringLiteral("width"), QStringLiteral("height")});
    const QString place = QString::number(0x200 + m_keys.size() + 1, 16).rightJustified(4, u'0');
    Known known;
    known.sink.address = node.hardwareAddress(
        address, QLatin1String("02:00:00:00:") + place.first(2) + u':' + place.sliced(2));
    for (const auto &[other, sink] : m_sinks) {
        // Whatever its case, it is one address.
        if (sink.sink.address.compare(known.sink.address, Qt::CaseInsensitive) == 0)
            node.fail(QLatin1String("is that of ") + other, address);
    }
    known.sink.name = node.text(QStringLiteral("name"), key);
    known.sink.type = node.text(QStringLiteral("type"), QStringLiteral("7-0050F204-1"));
    known.inRange = node.boolean(QStringLiteral("in-range"), true);
    known.accepts = node.boolean(QStringLiteral("accepts"), true);
    known.pin = node.identifier(QStringLiteral("pin"), {}).value_or(QString());
    known.resolution = {node.integer(QStringLiteral("width"), 1280, 1, maxPixels),
        node.integer(QStringLiteral("height"), 720, 1, maxPixels)};
    m_keys.append(key);
    m_sinks.emplace(key, known);
}

std::vector<SimVerb> SimulatedMiracast::verbs(const QString &)
{
    const QString sink = QStringLiteral("SINK");
    std::vector<SimVerb> verbs{
        {QStringLiteral("sink-appears"), {sink},
            QStringLiteral("brings a sink into range; scans bring it into sight"),
            [this](const QStringList &words) { sinkCalled(words[0]).inRange = true; }},
        {QStringLiteral("sink-goes"), {sink},
            QStringLiteral("takes a sink out of range, which ends its session; a scan finds it missing"),
            [this](const QStringList &words) {
                sinkCalled(words[0]).inRange = false;
                if (m_session && m_session->key == words[0] && endConnection(Success))
                    Q_EMIT changed();
            }},
        {QStringLiteral("stop"), {QStringLiteral("CODE")},
            QStringLiteral(
                "stops the service: 1 internally, 2 by an application, 4 for lack of support, 5 by "
                "policy, 6 to 9 as Wi-Fi Direct fails"),
            [this](const QStringList &words) {
                stop(SimArgument::integer(words[0], StoppedInternally, LastStopReason));
            }},
        {QStringLiteral("start"), {}, QStringLiteral("starts the service again"),
            [this](const QStringList &) {
                if (!m_supported)
                    throw Error(QStringLiteral("the phone has no Miracast"));
                m_stopReason = NotStopped;
                Q_EMIT changed();
            }},
    };
    for (const SimVerb &mishap : m_mishaps.verbs())
        verbs.push_back(mishap);
    return verbs;
}

std::optional<MiracastSource::State> SimulatedMiracast::state() const
{
    State state;
    state.stopReason = m_stopReason;
    state.application = m_application;
    for (const QString &key : m_visible)
        state.sinks.append(m_sinks.at(key).sink);
    if (m_attempt) {
        state.connection = Connection::Connecting;
        state.sink = m_sinks.at(m_attempt->key).sink;
    } else if (m_session) {
        state.connection = Connection::Connected;
        state.sink = m_sinks.at(m_session->key).sink;
        state.session = m_session->paused ? Session::Paused : Session::Playing;
        state.sessionId = m_session->id;
        state.resolution = m_displays.displays()->at(m_session->display).size;
    }
    return state;
}

void SimulatedMiracast::scan(const Done &done)
{
    if (const int code = obstacle())
        return done(code);
    wake();
    m_scans.append(done);
    if (!m_scanning.isActive())
        m_scanning.start(m_scanTime);
}

void SimulatedMiracast::connectSink(const QString &address, const QString &pin, const Done &done)
{
    if (const int code = obstacle())
        return done(code);
    wake();
    if (m_attempt || m_session)
        return done(InvalidRequest);
    const QString key = visibleAt(address);
    if (key.isEmpty())
        return done(SinkNotFound);
    m_attempt = Attempt{key, pin, done};
    m_connecting.start(m_connectTime);
    Q_EMIT changed();
}

void SimulatedMiracast::disconnectSink(const Done &done)
{
    if (const int code = obstacle())
        return done(code);
    if (!endConnection(Cancelled))
        return done(InvalidRequest);
    Q_EMIT changed();
    done(Success);
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
    if (const int code = obstacle())
        return done(code);
    if (!m_session || m_session->paused == paused)
        return done(InvalidRequest);
    m_session->paused = paused;
    Q_EMIT changed();
    done(Success);
}

void SimulatedMiracast::shutdown(const Done &done)
{
    if (const int code = obstacle())
        return done(code);
    if (m_application && !m_application->persistent)
        m_application.reset();
    stop(StoppedByApplication);
    done(Success);
}

void SimulatedMiracast::warmUp(const Application &application, const Done &done)
{
    if (const int code = obstacle())
        return done(code);
    wake();
    m_application = application;
    Q_EMIT changed();
    done(Success);
}

std::optional<Mishap> SimulatedMiracast::takeMishap(const QString &message)
{
    return m_mishaps.take(message);
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

// What keeps the service from any request; one that an application has shut down starts with the next.
int SimulatedMiracast::obstacle() const
{
    if (!m_supported)
        return ServiceFailed;
    if (m_stopReason == NotStopped || m_stopReason == StoppedByApplication)
        return Success;
    if (m_stopReason == StoppedByPolicy)
        return ForbiddenByPolicy;
    return m_stopReason >= StoppedByWiFi ? WiFiFailed : ServiceFailed;
}

void SimulatedMiracast::wake()
{
    if (m_stopReason == NotStopped)
        return;
    m_stopReason = NotStopped;
    Q_EMIT changed();
}

void SimulatedMiracast::finishScan()
{
    m_visible.clear();
    for (const QString &key : m_keys) {
        if (m_sinks.at(key).inRange)
            m_visible.append(key);
    }
    Q_EMIT changed();
    for (const Done &done : std::exchange(m_scans, {}))
        done(Success);
}

void SimulatedMiracast::finishConnecting()
{
    const Attempt attempt = *std::exchange(m_attempt, std::nullopt);
    const Known &known = m_sinks.at(attempt.key);
    int code = Success;
    if (!known.inRange)
        code = SinkLost;
    else if (!known.accepts)
        code = SinkRefused;
    else if (!known.pin.isEmpty() && attempt.pin.isEmpty())
        code = PinRequired;
    else if (!known.pin.isEmpty() && attempt.pin != known.pin)
        code = PinIncorrect;
    if (code == Success) {
        const int display = m_displays.addWireless(known.sink.name, known.resolution);
        m_session = Running{attempt.key, QUuid::createUuid().toString(QUuid::WithoutBraces), display};
    }
    Q_EMIT changed();
    attempt.done(code);
}

// Ends the session, or what is being connected, whose request is answered with the code; whether there was
// any.
bool SimulatedMiracast::endConnection(int code)
{
    m_connecting.stop();
    if (const auto attempt = std::exchange(m_attempt, std::nullopt)) {
        attempt->done(code);
        return true;
    }
    if (const auto session = std::exchange(m_session, std::nullopt)) {
        m_displays.remove(session->display);
        return true;
    }
    return false;
}

void SimulatedMiracast::stop(int reason)
{
    m_stopReason = reason;
    const int code = reason == StoppedByApplication ? int(Cancelled) : obstacle();
    (void)endConnection(code);
    m_scanning.stop();
    for (const Done &done : std::exchange(m_scans, {}))
        done(code);
    Q_EMIT changed();
}

// The session's display may have got another size, or be gone.
void SimulatedMiracast::onDisplaysChanged()
{
    if (!m_session)
        return;
    if (!m_displays.displays()->contains(m_session->display))
        m_session.reset();
    Q_EMIT changed();
}

} // namespace oz::services
