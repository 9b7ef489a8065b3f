#include "scenario/ScenarioPlayer.hpp"

#include "publishing/Tree.hpp"
#include "scenario/ScenarioStrand.hpp"

#include <algorithm>

namespace oz::services {

QVariantMap ScenarioEntry::toMap() const
{
    return {{QStringLiteral("time"), double(time.count()) / 1000}, {QStringLiteral("place"), place},
        {QStringLiteral("text"), text}, {QStringLiteral("outcome"), outcome},
        {QStringLiteral("detail"), detail}, {QStringLiteral("expectation"), expectation},
        {QStringLiteral("seconds"), seconds}};
}

ScenarioPlayer::ScenarioPlayer(std::unique_ptr<Scenario> scenario, PhoneClock &clock, const Tree &tree,
    Order order, const ScenarioOptions &options)
    : m_scenario(std::move(scenario)), m_time(clock, options.speed), m_order(std::move(order)),
      m_keepsGoing(options.keepGoing), m_random(options.seed.value_or(m_scenario->seed())),
      m_planned(m_scenario->plannedTime(m_scenario->steps(), m_scenario->variables()))
{
    connect(&tree, &Tree::toldAnew, this, &ScenarioPlayer::evaluateLater);
    connect(&tree, &Tree::asked, this, &ScenarioPlayer::onAsked);
    // Before the next thing happens on the phone, what has just happened may be what is waited for.
    connect(&clock, &PhoneClock::turned, this, &ScenarioPlayer::evaluate);
}

ScenarioPlayer::~ScenarioPlayer()
{
    disconnect();
    end(Stopped);
}

void ScenarioPlayer::start()
{
    if (m_state != Playing)
        return; // it was stopped before
    m_time.begin();
    m_main = std::make_unique<Strand>(
        *this, m_time.began(), [this] { end(m_problem.isEmpty() ? Passed : Failed); });
    m_strands.emplace_back(m_main.get());
    m_main->begin(m_scenario->steps(), m_scenario->variables());
    evaluate();
}

void ScenarioPlayer::stop(const QString &reason)
{
    if (m_state != Playing)
        return;
    m_problem = reason;
    end(Stopped);
}

void ScenarioPlayer::setPaused(bool paused)
{
    if (m_state != Playing || std::exchange(m_isPaused, paused) == paused)
        return;
    if (paused)
        m_time.freeze();
    const auto strands = m_strands;
    for (const auto &strand : strands) {
        if (strand && paused)
            strand->pause();
        else if (strand && m_state == Playing)
            strand->resume();
    }
    if (!paused) {
        m_time.unfreeze();
        evaluateLater(); // what it waits for may have come meanwhile
    }
}

void ScenarioPlayer::setSpeed(double speed)
{
    if (m_state == Playing)
        m_time.setSpeed(speed);
}

std::pair<int, int> ScenarioPlayer::progress() const
{
    return m_main ? std::pair(m_main->begun(), int(m_scenario->steps().size())) : std::pair(0, 0);
}

int ScenarioPlayer::percent() const
{
    if (m_state == Passed)
        return 100;
    const auto [step, steps] = progress();
    const double done = m_planned.count() > 0 ? m_passed / m_planned : double(step - 1) / std::max(steps, 1);
    return int(std::clamp(done * 100, 0.0, 99.0));
}

void ScenarioPlayer::pass(ScenarioStep::PlannedTime time)
{
    const int before = percent();
    m_passed += time;
    if (percent() != before)
        Q_EMIT progressed();
}

void ScenarioPlayer::end(State state)
{
    if (std::exchange(m_state, state) != Playing)
        return;
    m_isPaused = false;
    for (const auto &strand : m_strands) {
        if (strand)
            strand->halt();
    }
    m_time.end();
    Q_EMIT finished();
}

void ScenarioPlayer::note(
    const ScenarioStep &step, const char *outcome, const QString &detail, double seconds)
{
    const bool hasEnded = qstrcmp(outcome, "waiting") != 0;
    Q_EMIT logged({m_time.now() - m_time.began(), step.place(), step.text, QString::fromLatin1(outcome),
        detail, hasEnded && step.isExpectation() ? step.name : QString(), seconds});
}

void ScenarioPlayer::fail(const ScenarioStep &step, const QString &reason, double seconds)
{
    note(step, "failed", reason, seconds);
    if (m_problem.isEmpty())
        m_problem = step.place() + QLatin1String(": ") + step.text + QLatin1String(": ") + reason;
    if (!m_keepsGoing)
        end(Failed);
}

void ScenarioPlayer::onAsked(const QString &path, const QVariantMap &message)
{
    m_unused.add(path, message);
    evaluateLater();
}

// Not in the middle of what happens.
void ScenarioPlayer::evaluateLater()
{
    if (!std::exchange(m_isEvaluationPlanned, true))
        QMetaObject::invokeMethod(
            this, [this] { evaluate(); }, Qt::QueuedConnection);
}

void ScenarioPlayer::evaluate()
{
    m_isEvaluationPlanned = false;
    const auto strands = m_strands;
    for (const auto &strand : strands) {
        if (strand && m_state == Playing)
            strand->check();
    }
    std::erase_if(m_strands, [](const auto &strand) { return strand.isNull(); });
}

// From 0 up to 1.
double ScenarioPlayer::random()
{
    return m_random.generateDouble();
}
} // namespace oz::services
