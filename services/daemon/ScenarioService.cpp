#include "daemon/ScenarioService.hpp"

#include "daemon/Paging.hpp"
#include "phone/SimVerb.hpp"
#include "source/Error.hpp"

#include <QFileInfo>
#include <QTimer>

#include <cerrno>
#include <cmath>

namespace oz::services {

namespace {

constexpr qsizetype MostEntries = 100'000; // of a log
constexpr double Fastest = 100'000; // as `ozdevice sim clock speed` takes it

const QString FileKey = QStringLiteral("file");
const QString SpeedKey = QStringLiteral("speed");
const QString MaxSpeed = QStringLiteral("max");
const QString SeedKey = QStringLiteral("seed");
const QString WaitForKey = QStringLiteral("wait-for");
const QString WaitLimitKey = QStringLiteral("wait-limit");
constexpr double UsualWaitLimit = 10; // seconds
constexpr double LongestWaitLimit = 3600;

const char *wordOf(ScenarioPlayer::State state)
{
    constexpr const char *words[] = {"playing", "passed", "failed", "stopped"};
    return words[state];
}

// A scenario at speed 0 would never end, so 0 means the same as max.
double speedOf(const QVariant &speed)
{
    if (speed == MaxSpeed)
        return PhoneClock::WithoutWaiting;
    bool ok = false;
    const double number = speed.toDouble(&ok);
    if (ok && number == 0)
        return PhoneClock::WithoutWaiting;
    if (!(ok && number >= 0.001 && number <= Fastest)) {
        throw WrongOrder(
            QLatin1String("the speed is a number from 0.001 to 100000, or max (which 0 means too), not '")
            + speed.toString() + u'\'');
    }
    return number;
}

std::optional<ApplicationWatch::For> waitOf(const QVariantMap &order)
{
    const QString word = order.value(WaitForKey, QStringLiteral("none")).toString();
    if (word == u"none")
        return std::nullopt;
    if (word == u"open")
        return ApplicationWatch::For::Open;
    if (word == u"request")
        return ApplicationWatch::For::Request;
    throw WrongOrder(
        QLatin1String("a scenario can wait for open, request or none, not for '") + word + u'\'');
}

int waitLimitOf(const QVariantMap &order)
{
    bool ok = false;
    const double seconds = order.value(WaitLimitKey, UsualWaitLimit).toDouble(&ok);
    if (!(ok && seconds >= 0 && seconds <= LongestWaitLimit))
        throw WrongOrder(QStringLiteral("a scenario waits from 0 to 3600 seconds for an application"));
    return int(seconds * 1000);
}

ScenarioOptions optionsOf(const QVariantMap &order)
{
    ScenarioOptions options;
    if (order.contains(SpeedKey))
        options.speed = speedOf(order.value(SpeedKey));
    if (order.contains(SeedKey)) {
        bool ok = false;
        options.seed = order.value(SeedKey).toString().toUInt(&ok);
        if (!ok)
            throw WrongOrder(QStringLiteral("the seed is a whole number from 0 to 4294967295"));
    }
    options.keepGoing = order.value(QStringLiteral("keep-going")).toBool();
    return options;
}

} // namespace

ScenarioService::ScenarioService(Tree &tree, Phone phone)
    : m_tree(tree), m_phone(std::move(phone)),
      m_object(tree, QStringLiteral("/pps/system/ozdeviced/scenario"), 0600)
{
    publish();
    m_waitLimit.setSingleShot(true);
    connect(&m_waitLimit, &QTimer::timeout, this,
        [this] { begin(m_application->hasCome() ? Begin::InTime : Begin::Late); });
}

QVariantMap ScenarioService::play(const QVariantMap &order)
{
    const ScenarioOptions options = optionsOf(order);
    const auto wait = waitOf(order);
    const int waitLimit = waitLimitOf(order);
    PhoneClock &clock = m_phone.clock();
    const QString file = order.value(FileKey).toString();
    if (!QFileInfo(file).isAbsolute())
        throw Error(QStringLiteral("a scenario's file is named by its whole path"));
    auto scenario = std::make_unique<Scenario>(
        file, order.value(QStringLiteral("variables")).toMap(), m_tree, m_phone.makeCheck());
    QVariantMap told{{QStringLiteral("description"), scenario->description()},
        {QStringLiteral("expectations"), scenario->hasExpectations()}};
    if (order.value(QStringLiteral("check")).toBool())
        return told;
    if (m_player && m_player->state() == ScenarioPlayer::Playing)
        throw Error(QStringLiteral("a scenario is playing already; `ozdevice play --stop` ends it"));
    m_player = std::make_unique<ScenarioPlayer>(std::move(scenario), clock, m_tree, m_phone.order, options);
    m_entries.clear();
    m_dropped = 0;
    m_told = told;
    m_told.insert(FileKey, file);
    ++m_plays;
    connect(m_player.get(), &ScenarioPlayer::logged, this, &ScenarioService::onLogged);
    connect(m_player.get(), &ScenarioPlayer::progressed, this, &ScenarioService::publishLater);
    connect(m_player.get(), &ScenarioPlayer::finished, this, &ScenarioService::onFinished);
    m_hasBegun = !wait;
    m_isLate = false;
    if (wait) {
        m_application = std::make_unique<ApplicationWatch>(m_tree, *wait);
        // Not in the middle of what the application does, or of a publish.
        connect(
            m_application.get(), &ApplicationWatch::came, this,
            [this, play = m_plays] {
                if (play == m_plays)
                    begin(Begin::InTime);
            },
            Qt::QueuedConnection);
        m_waitLimit.start(waitLimit);
    } else {
        // Whoever asked for it is told first that it plays.
        QMetaObject::invokeMethod(m_player.get(), &ScenarioPlayer::start, Qt::QueuedConnection);
    }
    publish();
    return told;
}

void ScenarioService::begin(Begin when)
{
    if (!std::exchange(m_application, nullptr))
        return;
    m_waitLimit.stop();
    m_hasBegun = true;
    m_isLate = when == Begin::Late;
    m_player->start();
    publishLater();
}

ScenarioPlayer &ScenarioService::playing() const
{
    if (!m_player || m_player->state() != ScenarioPlayer::Playing)
        throw Error(QStringLiteral("no scenario is playing"));
    return *m_player;
}

void ScenarioService::setPaused(bool paused)
{
    ScenarioPlayer &player = playing();
    if (m_application)
        throw Error(QStringLiteral("the scenario has not begun; it waits for an application"));
    if (player.isPaused() == paused) {
        throw Error(paused ? QStringLiteral("the scenario is paused already")
                           : QStringLiteral("the scenario is not paused"));
    }
    player.setPaused(paused);
    publishLater();
}

void ScenarioService::stop(const QString &reason)
{
    // The kernel may not have told yet what an application did just before it ended.
    if (m_application && m_application->hasCome())
        begin(Begin::InTime);
    if (m_player)
        m_player->stop(reason);
}

RequestTable ScenarioService::requests()
{
    const auto answered = [](const std::function<QVariant(const QVariantMap &)> &handle) {
        return [handle](const Request &request, const Answer &answer) {
            try {
                answer({handle(request.data.toMap()), 0, {}});
            } catch (const Error &error) {
                answer(refusalFor(error));
            }
        };
    };
    return {
        {QStringLiteral("play"), {}, answered([this](const QVariantMap &order) { return play(order); })},
        {QStringLiteral("stop-scenario"), {}, answered([this](const QVariantMap &) {
             (void)playing();
             stop(QStringLiteral("it was asked for"));
             return QVariant();
         })},
        {QStringLiteral("pause-scenario"), {}, answered([this](const QVariantMap &) {
             setPaused(true);
             return QVariant();
         })},
        {QStringLiteral("resume-scenario"), {}, answered([this](const QVariantMap &) {
             setPaused(false);
             return QVariant();
         })},
        {QStringLiteral("scenario-speed"), {}, answered([this](const QVariantMap &order) {
             playing().setSpeed(speedOf(order.value(SpeedKey)));
             publishLater();
             return QVariant();
         })},
        {QStringLiteral("public-values"), {},
            answered([this](const QVariantMap &) { return describePublic(m_tree); })},
        {QStringLiteral("about-scenario"), {}, answered([](const QVariantMap &order) {
             return aboutScenario(order.value(FileKey).toString());
         })},
        {QStringLiteral("record"), {}, answered([this](const QVariantMap &order) {
             record(order);
             return QVariant();
         })},
        {QStringLiteral("recorded"), {},
            answered([this](const QVariantMap &order) { return recorded(order); })},
        {QStringLiteral("scenario"), {}, answered([this](const QVariantMap &order) {
             if (!m_player)
                 throw Error(QStringLiteral("no scenario has been played"));
             return logFrom(order.value(QStringLiteral("from")).toLongLong());
         })},
    };
}

void ScenarioService::record(const QVariantMap &order)
{
    const QStringList facilities = order.value(QStringLiteral("facilities")).toStringList();
    m_recorder =
        std::make_unique<Recorder>(m_tree, facilities.isEmpty() ? Recorder::facilities() : facilities,
            order.value(QStringLiteral("keep-identifiers")).toBool(),
            order.value(QStringLiteral("report")).toBool() ? m_phone.sinkNames : Recorder::SinkNames());
}

QVariantMap ScenarioService::recorded(const QVariantMap &order)
{
    if (!m_recorder)
        throw Error(QStringLiteral("nothing is being recorded"));
    const QStringList &steps = m_recorder->script().steps();
    const qsizetype from =
        std::clamp<qsizetype>(order.value(QStringLiteral("from")).toLongLong(), 0, steps.size());
    const QStringList told = steps.mid(from, MostAtOnce);
    QStringList texts = order.value(QStringLiteral("texts")).toStringList();
    for (QString &text : texts)
        text = m_recorder->masked(text);
    QVariantMap answer{{QStringLiteral("steps"), told}, {QStringLiteral("texts"), texts},
        {QStringLiteral("count"), steps.size()}, {QStringLiteral("phone"), m_recorder->script().phone()},
        {QStringLiteral("masked"), m_recorder->script().mask().hasMasked()}};
    if (order.value(QStringLiteral("end")).toBool() && from + told.size() == steps.size())
        m_recorder.reset();
    return answer;
}

void ScenarioService::onLogged(const ScenarioEntry &entry)
{
    m_entries.append(entry);
    if (m_entries.size() > MostEntries) {
        m_entries.removeFirst();
        ++m_dropped;
    }
    Q_EMIT logged(entry);
    publishLater();
}

void ScenarioService::onFinished()
{
    m_waitLimit.stop();
    m_application.reset();
    Q_EMIT finished(m_player->state(), m_player->problem());
    publish(); // the daemon may be about to end
}

// Changes that come at the same time are published together.
void ScenarioService::publishLater()
{
    if (!std::exchange(m_isPublishPlanned, true))
        QTimer::singleShot(0, this, &ScenarioService::publish);
}

void ScenarioService::publish()
{
    m_isPublishPlanned = false;
    m_object.publish(state());
}

QVariantMap ScenarioService::state() const
{
    QVariantMap state = m_told;
    state.insert(QStringLiteral("number"), m_plays);
    if (!m_player)
        return state;
    const auto [step, steps] = m_player->progress();
    state.insert({{QStringLiteral("state"), QLatin1String(wordOf(m_player->state()))},
        {SpeedKey, std::isinf(m_player->speed()) ? QVariant(MaxSpeed) : m_player->speed()},
        {QStringLiteral("begun"), m_hasBegun}, {QStringLiteral("late"), m_isLate},
        {QStringLiteral("paused"), m_player->isPaused()}, {QStringLiteral("step"), step},
        {QStringLiteral("steps"), steps}, {QStringLiteral("percent"), m_player->percent()},
        {QStringLiteral("problem"), m_player->problem()}, {QStringLiteral("count"), count()}});
    return state;
}

QVariantMap ScenarioService::logFrom(qsizetype from) const
{
    const qsizetype begin = std::clamp<qsizetype>(from - m_dropped, 0, m_entries.size());
    const qsizetype end = std::min(begin + MostAtOnce, m_entries.size());
    QVariantList entries;
    for (qsizetype i = begin; i < end; ++i)
        entries.append(m_entries[i].toMap());
    QVariantMap log = state();
    log.insert({{QStringLiteral("entries"), entries}, {QStringLiteral("next"), m_dropped + end}});
    // The rest of the log comes before the end.
    if (end < m_entries.size())
        log.insert(QStringLiteral("state"), QLatin1String(wordOf(ScenarioPlayer::Playing)));
    return log;
}

} // namespace oz::services
