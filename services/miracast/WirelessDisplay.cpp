#include "miracast/WirelessDisplay.hpp"

#include <oz/Limits.hpp>

#include <utility>

namespace oz::services {

namespace {

const QString SavedDisplay = QStringLiteral("wireless-display");
const QString SavedSession = QStringLiteral("session");
const QString SavedSupport = QStringLiteral("supported");
const QString SavedShutDown = QStringLiteral("shut-down");
const QString SavedApplication = QStringLiteral("application");
const QString SavedSinks = QStringLiteral("sinks");

QString captureOf(const CastLines::Hello &hello)
{
    if (hello.capture.isEmpty())
        return QLatin1String("there is no screen to cast: ") + hello.captureRemark;
    return hello.captureRemark.isEmpty() ? hello.capture : hello.captureRemark;
}

} // namespace

WirelessDisplay::WirelessDisplay(std::shared_ptr<CastProcess> cast,
    std::vector<std::unique_ptr<SinkWay>> ways, std::unique_ptr<FriendlyName> name, const QJsonObject &order,
    StateStore &store)
    : m_cast(std::move(cast)), m_ways(std::move(ways)), m_name(std::move(name)), m_order(order),
      m_store(store)
{
    m_helloLimit.setSingleShot(true);
    m_helloLimit.setInterval(graceTime());
    m_helloLimit.callOnTimeout(this, &WirelessDisplay::onCastChanged);
    m_helloLimit.start();
    connect(m_cast.get(), &CastProcess::changed, this, &WirelessDisplay::onCastChanged);
    connect(m_cast.get(), &CastProcess::terminated, this, &WirelessDisplay::onTerminated);
    connect(&m_ways, &SinkWays::scanned, this, &WirelessDisplay::tell);
    connect(&m_ways, &SinkWays::remarkChanged, this, &WirelessDisplay::updateRemark);
    restore();
}

void WirelessDisplay::onCastChanged()
{
    if (const auto &hello = m_cast->hello()) {
        m_helloLimit.stop();
        m_isSupported = hello->missing.isEmpty() && !hello->encoder.isEmpty();
        updateRemark();
        return tell();
    }
    // Until more is known, what was published holds.
    const bool mayCome = m_helloLimit.isActive() && m_cast->isExpected();
    if (presence() == Presence::Absent || !mayCome)
        setAbsent(m_cast->absence());
}

void WirelessDisplay::onTerminated()
{
    m_helloLimit.start();
    m_ways.cancelScan(Result::ServiceFailed);
}

MiracastState WirelessDisplay::stateNow() const
{
    MiracastState state;
    state.supported = m_isSupported;
    if (!m_isSupported)
        state.stop = MiracastState::Stop::NotSupported;
    else if (m_isShutDown)
        state.stop = MiracastState::Stop::Application;
    state.application = m_application;
    state.sinks = m_ways.sinks();
    if (m_session)
        m_session->addTo(&state);
    return state;
}

void WirelessDisplay::tell()
{
    save();
    if (m_cast->hello() || isKnown())
        know(stateNow());
}

void WirelessDisplay::updateRemark()
{
    const auto &hello = m_cast->hello();
    if (!hello)
        return;
    if (!m_isSupported) {
        return setRemark(QLatin1String("the screen cannot be cast: ")
            + (hello->missing.isEmpty() ? QStringLiteral("there is no encoder") : hello->missing));
    }
    QStringList parts{captureOf(*hello),
        hello->encoder + QLatin1String(hello->audio.isEmpty() ? " without sound" : " with ") + hello->audio,
        m_ways.remark()};
    const QString &news = m_session ? m_session->news() : m_news;
    if (!news.isEmpty())
        parts.append(news);
    setRemark(parts.join(QLatin1String("; ")),
        news.isEmpty() ? QStringList() : QStringList{m_session ? m_session->sinkName() : m_newsSink});
}

bool WirelessDisplay::isReady(const Done &done)
{
    if (!m_cast->hello() || !m_isSupported) {
        done(Result::ServiceFailed);
        return false;
    }
    return true;
}

void WirelessDisplay::wake()
{
    if (std::exchange(m_isShutDown, false))
        tell();
}

void WirelessDisplay::scan(const Done &done)
{
    if (!isReady(done))
        return;
    wake();
    m_ways.scan(done);
}

void WirelessDisplay::connectSink(const QString &address, const QString &pin, const Done &done)
{
    if (!isReady(done))
        return;
    wake();
    if (m_session)
        return done(Result::InvalidRequest);
    const SinkWays::Found found = m_ways.find(address);
    if (!found.way)
        return done(Result::SinkNotFound);
    if (m_cast->hello()->capture.isEmpty())
        return done(Result::ServiceFailed);
    m_session = std::make_unique<CastSession>(*m_cast, *found.way, found.sink, done);
    connect(m_session.get(), &CastSession::changed, this, &WirelessDisplay::onSessionChanged);
    connect(m_session.get(), &CastSession::over, this, &WirelessDisplay::onSessionOver);
    onSessionChanged();
    QJsonObject order = m_order;
    order.insert(QStringLiteral("friendly-name"), m_name->text());
    m_session->start(pin, order);
}

void WirelessDisplay::onSessionChanged()
{
    updateRemark();
    tell();
}

void WirelessDisplay::onSessionOver()
{
    CastSession *session = m_session.release();
    session->deleteLater(); // it is the one that tells
    m_news = session->news();
    m_newsSink = session->sinkName();
    onSessionChanged();
    session->answer();
}

void WirelessDisplay::disconnectSink(const Done &done)
{
    if (!isReady(done))
        return;
    if (m_session)
        m_session->end(done);
    else
        done(Result::InvalidRequest);
}

void WirelessDisplay::pause(const Done &done)
{
    setPaused(true, done);
}

void WirelessDisplay::resume(const Done &done)
{
    setPaused(false, done);
}

void WirelessDisplay::setPaused(bool paused, const Done &done)
{
    if (isReady(done) && (!m_session || !m_session->setPaused(paused, done)))
        done(Result::InvalidRequest);
}

void WirelessDisplay::shutdown(const Done &done)
{
    if (!isReady(done))
        return;
    m_ways.cancelScan(Result::Cancelled);
    if (m_session)
        m_session->end([this, done](Result) { stop(done); });
    else
        stop(done);
}

void WirelessDisplay::stop(const Done &done)
{
    if (m_application && !m_application->persistent)
        m_application.reset();
    m_isShutDown = true;
    tell();
    done(Result::Success);
}

void WirelessDisplay::warmUp(const MiracastState::Application &application, const Done &done)
{
    if (!isReady(done))
        return;
    wake();
    m_application = application;
    tell();
    done(Result::Success);
}

void WirelessDisplay::save()
{
    QVariantMap saved{{SavedSession, m_session != nullptr}, {SavedSupport, m_isSupported},
        {SavedShutDown, m_isShutDown}, {SavedSinks, m_ways.saved()}};
    if (m_application)
        saved.insert(SavedApplication, QVariantList{m_application->name, m_application->persistent});
    m_store.save(SavedDisplay, saved);
}

// What outlives the daemon. A session does not, and applications hear of its end before ozcast is there.
void WirelessDisplay::restore()
{
    const QVariantMap saved = m_store.load(SavedDisplay);
    m_isSupported = saved.value(SavedSupport, true).toBool();
    m_isShutDown = saved.value(SavedShutDown).toBool();
    if (const QVariantList application = saved.value(SavedApplication).toList(); !application.isEmpty())
        m_application = {application.value(0).toString(), application.value(1).toBool()};
    m_ways.restore(saved.value(SavedSinks).toList());
    if (saved.value(SavedSession).toBool())
        know(stateNow());
}

} // namespace oz::services
