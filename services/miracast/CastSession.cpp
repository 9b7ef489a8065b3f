#include "miracast/CastSession.hpp"

#include "publishing/Log.hpp"

#include <QUuid>

#include <chrono>
#include <utility>

namespace oz::services {

namespace {

using namespace std::chrono_literals;
using Why = CastLines::Ended::Why;

// ozcast keeps the limits of each step, and tells within this time that one has passed.
constexpr auto TellDelay = 1000ms;
constexpr auto PauseLimit = 6000ms; // as ozcast has it
constexpr auto EndLimit = 1000ms;
constexpr int MostSteps = 20; // of which each has the limit of its own

MiracastSource::Result resultOf(Why why)
{
    switch (why) {
    case Why::Asked:
        return MiracastSource::Result::Cancelled;
    case Why::Sink:
    case Why::Lost:
        return MiracastSource::Result::SinkLost;
    case Why::Refused:
        return MiracastSource::Result::SinkRefused;
    case Why::Failed:
        return MiracastSource::Result::ServiceFailed;
    }
    return MiracastSource::Result::ServiceFailed;
}

} // namespace

CastSession::CastSession(
    CastProcess &cast, SinkWay &way, const MiracastState::Sink &sink, const Done &connected)
    : m_process(cast), m_way(way), m_sink(sink), m_connected(connected)
{
    m_silence.setSingleShot(true);
    m_silence.callOnTimeout(this, &CastSession::onSilence);
    connect(&cast, &CastProcess::stepped, this, &CastSession::onStepped);
    connect(&cast, &CastProcess::playing, this, &CastSession::onPlaying);
    connect(&cast, &CastProcess::paused, this, &CastSession::onPaused);
    connect(&cast, &CastProcess::ended, this, &CastSession::onEnded);
    connect(&cast, &CastProcess::terminated, this, [this] { finish(Result::ServiceFailed); });
    connect(&way, &SinkWay::lost, this, [this] { end(Result::SinkLost); });
}

void CastSession::start(const QString &pin, const QJsonObject &order)
{
    m_way.reach(m_sink.address, pin,
        [this, order](Result result, const SinkWay::Place &place) { onReached(result, place, order); });
}

void CastSession::onReached(Result result, const SinkWay::Place &place, QJsonObject order)
{
    if (result != Result::Success)
        return finish(result);
    const auto limit = int(place.connectLimit.count());
    order.insert(QStringLiteral("name"), m_sink.name);
    order.insert(QStringLiteral("address"), place.address);
    order.insert(QStringLiteral("control-port"), place.controlPort);
    order.insert(QStringLiteral("connect-limit-ms"), limit);
    m_phase = Phase::Starting;
    m_cast = m_process.cast(order);
    m_connectLimit = place.connectLimit;
    m_silence.start(m_connectLimit + TellDelay);
}

void CastSession::onStepped(const CastLines::Step &step)
{
    if (step.id != m_cast || m_phase != Phase::Starting || ++m_steps > MostSteps)
        return;
    qCInfo(logServices).noquote() << m_sink.name + QLatin1String(": ") + step.text;
    m_silence.start(step.limit.value_or(m_connectLimit) + TellDelay);
    m_news = m_sink.name + QLatin1String(": ") + step.text;
    Q_EMIT changed();
}

void CastSession::onPlaying(const CastLines::Playing &playing)
{
    if (playing.id != m_cast)
        return;
    if (m_phase == Phase::Running) {
        m_shown->size = playing.size;
        return becomePaused(false);
    }
    if (m_phase != Phase::Starting)
        return;
    m_silence.stop();
    m_phase = Phase::Running;
    m_shown = Shown{QUuid::createUuid().toString(QUuid::WithoutBraces), playing.size};
    m_news.clear();
    Q_EMIT changed();
    std::exchange(m_connected, nullptr)(Result::Success);
}

void CastSession::onPaused(const CastLines::Paused &paused)
{
    if (paused.id == m_cast && m_phase == Phase::Running)
        becomePaused(true);
}

// The sink may pause and resume by itself, too.
void CastSession::becomePaused(bool paused)
{
    const bool isNews = std::exchange(m_shown->isPaused, paused) != paused;
    Q_EMIT changed();
    if (!m_changed || !isNews)
        return;
    m_silence.stop();
    std::exchange(m_changed, nullptr)(Result::Success);
}

void CastSession::onEnded(const CastLines::Ended &ended)
{
    if (ended.id != m_cast)
        return;
    if (ended.why != Why::Asked) {
        m_news = m_sink.name + QLatin1String(": ") + ended.text;
        qCInfo(logServices).noquote() << m_news;
    }
    finish(resultOf(ended.why));
}

// Nothing but its end helps against a process that stands still.
void CastSession::onSilence()
{
    m_news = QStringLiteral("ozcast did not answer, and was ended");
    qCWarning(logServices).noquote() << m_news;
    m_process.kill();
}

bool CastSession::setPaused(bool paused, const Done &done)
{
    if (m_phase != Phase::Running || m_changed || m_shown->isPaused == paused)
        return false;
    m_changed = done;
    m_process.order(paused ? QStringLiteral("pause") : QStringLiteral("resume"), m_cast);
    m_silence.start(PauseLimit + TellDelay);
    return true;
}

void CastSession::end(const Done &done)
{
    m_ended.append(done);
    end(Result::Cancelled);
}

void CastSession::end(Result cause)
{
    if (m_phase == Phase::Reaching)
        return finish(cause);
    if (m_phase == Phase::Ending || m_phase == Phase::Over)
        return;
    m_result = cause;
    m_phase = Phase::Ending;
    m_process.order(QStringLiteral("end"), m_cast);
    m_silence.start(EndLimit);
}

void CastSession::finish(Result result)
{
    if (std::exchange(m_phase, Phase::Over) == Phase::Over)
        return;
    m_silence.stop();
    m_way.leave();
    if (!m_result)
        m_result = result;
    Q_EMIT over();
}

void CastSession::answer()
{
    const Result result = m_result.value_or(Result::Cancelled);
    if (const Done connected = std::exchange(m_connected, nullptr))
        connected(result);
    if (const Done changed = std::exchange(m_changed, nullptr))
        changed(result);
    const QList<Done> ended = std::exchange(m_ended, {});
    for (const Done &done : ended)
        done(Result::Success);
}

void CastSession::addTo(MiracastState *state) const
{
    state->sink = m_sink;
    state->connection = MiracastState::Connection::Connecting;
    if (!m_shown)
        return;
    state->connection = MiracastState::Connection::Connected;
    state->session = m_shown->isPaused ? MiracastState::Session::Paused : MiracastState::Session::Playing;
    state->sessionId = m_shown->id;
    state->resolution = m_shown->size;
}

} // namespace oz::services
