#include "daemon/ScenarioService.hpp"

#include "publishing/Error.hpp"

#include <QFileInfo>
#include <QTimer>

#include <cerrno>

namespace oz::services {

namespace {

constexpr qsizetype MostEntries = 100'000; // of a log
constexpr qsizetype MostAtOnce = 500; // in an answer
constexpr std::chrono::seconds LongestWait(20); // for something to happen; clients give up later
constexpr double Fastest = 100'000; // as `ozdevice sim clock speed` takes it

const QString FileKey = QStringLiteral("file");
const QString SpeedKey = QStringLiteral("speed");
const QString SeedKey = QStringLiteral("seed");

const char *wordOf(ScenarioPlayer::State state)
{
    constexpr const char *words[] = {"playing", "passed", "failed", "stopped"};
    return words[state];
}

ScenarioOptions optionsOf(const QVariantMap &order)
{
    ScenarioOptions options;
    if (const QVariant speed = order.value(SpeedKey); speed == QLatin1String("max")) {
        options.speed = PhoneClock::WithoutWaiting;
    } else if (speed.isValid()) {
        options.speed = speed.toDouble();
        if (!(*options.speed >= 0.001 && *options.speed <= Fastest)) {
            throw Error(QLatin1String("the speed is a number from 0.001 to 100000, or max, not '")
                + speed.toString() + u'\'');
        }
    }
    if (order.contains(SeedKey)) {
        bool ok = false;
        options.seed = order.value(SeedKey).toString().toUInt(&ok);
        if (!ok)
            throw Error(QStringLiteral("the seed is a whole number from 0 to 4294967295"));
    }
    options.keepGoing = order.value(QStringLiteral("keep-going")).toBool();
    return options;
}

} // namespace

ScenarioService::ScenarioService(const Tree &tree, Phone phone) : m_tree(tree), m_phone(std::move(phone))
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] { answerWaiting(true); });
}

QVariantMap ScenarioService::play(const QVariantMap &order)
{
    const ScenarioOptions options = optionsOf(order);
    PhoneClock &clock = m_phone.clock();
    const QString file = order.value(FileKey).toString();
    if (!QFileInfo(file).isAbsolute())
        throw Error(QStringLiteral("a scenario's file is named by its whole path"));
    auto scenario = std::make_unique<Scenario>(
        file, order.value(QStringLiteral("variables")).toMap(), m_tree, m_phone.makeCheck());
    const QVariantMap told{{QStringLiteral("description"), scenario->description()},
        {QStringLiteral("expectations"), scenario->hasExpectations()}};
    if (order.value(QStringLiteral("check")).toBool())
        return told;
    if (m_player && m_player->state() == ScenarioPlayer::Playing)
        throw Error(QStringLiteral("a scenario is playing already; `ozdevice play --stop` ends it"));
    m_player = std::make_unique<ScenarioPlayer>(std::move(scenario), clock, m_tree, m_phone.order, options);
    m_entries.clear();
    m_dropped = 0;
    connect(m_player.get(), &ScenarioPlayer::logged, this, &ScenarioService::onLogged);
    connect(m_player.get(), &ScenarioPlayer::finished, this, &ScenarioService::onFinished);
    // Whoever asked for it is told first that it plays.
    QMetaObject::invokeMethod(m_player.get(), &ScenarioPlayer::start, Qt::QueuedConnection);
    return told;
}

void ScenarioService::stop(const QString &reason)
{
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
                answer(Reply::failure(EINVAL, error.text()));
            }
        };
    };
    return {
        {QStringLiteral("play"), {}, answered([this](const QVariantMap &order) { return play(order); })},
        {QStringLiteral("stop-scenario"), {}, answered([this](const QVariantMap &) {
             if (!m_player || m_player->state() != ScenarioPlayer::Playing)
                 throw Error(QStringLiteral("no scenario is playing"));
             stop(QStringLiteral("it was asked for"));
             return QVariant();
         })},
        {QStringLiteral("public-values"), {},
            answered([this](const QVariantMap &) { return describePublic(m_tree); })},
        {QStringLiteral("record"), {}, answered([this](const QVariantMap &order) {
             record(order);
             return QVariant();
         })},
        {QStringLiteral("recorded"), {},
            answered([this](const QVariantMap &order) { return recorded(order); })},
        {QStringLiteral("scenario"), {},
            [this](const Request &request, const Answer &answer) {
                const auto from = request.data.toMap().value(QStringLiteral("from")).toLongLong();
                const bool isForNow = request.data.toMap().value(QStringLiteral("now")).toBool();
                if (!m_player)
                    return answer(Reply::failure(ENOENT, QStringLiteral("no scenario has been played")));
                if (isForNow)
                    return answer(tellFrom(from));
                if (m_waiting.empty())
                    m_patience.start(LongestWait);
                m_waiting.push_back({answer, from});
                answerWaiting(false);
            }},
    };
}

void ScenarioService::record(const QVariantMap &order)
{
    const QStringList facilities = order.value(QStringLiteral("facilities")).toStringList();
    m_recorder =
        std::make_unique<Recorder>(m_tree, facilities.isEmpty() ? Recorder::facilities() : facilities,
            order.value(QStringLiteral("keep-identifiers")).toBool());
}

QVariantMap ScenarioService::recorded(const QVariantMap &order)
{
    if (!m_recorder)
        throw Error(QStringLiteral("nothing is being recorded"));
    const QStringList &steps = m_recorder->steps();
    const qsizetype from =
        std::clamp<qsizetype>(order.value(QStringLiteral("from")).toLongLong(), 0, steps.size());
    const QStringList told = steps.mid(from, MostAtOnce);
    const QVariantMap answer{{QStringLiteral("steps"), told}, {QStringLiteral("count"), steps.size()},
        {QStringLiteral("phone"), m_recorder->phone()}};
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
    // One answer for what happens at the same time.
    if (!std::exchange(m_isAnswerPlanned, true)) {
        QTimer::singleShot(0, this, [this] {
            m_isAnswerPlanned = false;
            answerWaiting(false);
        });
    }
}

void ScenarioService::onFinished()
{
    Q_EMIT finished(m_player->state(), m_player->problem());
    answerWaiting(false);
}

void ScenarioService::answerWaiting(bool all)
{
    const bool isOver = m_player->state() != ScenarioPlayer::Playing;
    std::erase_if(m_waiting, [&](const Waiting &waiting) {
        if (!all && !isOver && waiting.from >= m_dropped + m_entries.size())
            return false;
        waiting.answer(tellFrom(waiting.from));
        return true;
    });
}

Reply ScenarioService::tellFrom(qsizetype from) const
{
    const qsizetype begin = std::clamp<qsizetype>(from - m_dropped, 0, m_entries.size());
    const qsizetype end = std::min(begin + MostAtOnce, m_entries.size());
    QVariantList entries;
    for (qsizetype i = begin; i < end; ++i)
        entries.append(m_entries[i].toMap());
    // What is left is told before the end is.
    const auto state = end < m_entries.size() ? ScenarioPlayer::Playing : m_player->state();
    return {QVariantMap{{QStringLiteral("entries"), entries}, {QStringLiteral("next"), m_dropped + end},
                {QStringLiteral("state"), QLatin1String(wordOf(state))},
                {QStringLiteral("problem"), m_player->problem()}},
        0, {}};
}

} // namespace oz::services
