#include "scenario/ScenarioPlayer.hpp"

#include "publishing/Tree.hpp"
#include "source/Error.hpp"

#include <QTimer>

#include <algorithm>

namespace oz::services {

namespace {

constexpr int MostAtOnce = 100; // steps in one turn of the event loop
constexpr qsizetype MostAsked = 10'000; // requests that no expectation has used yet

} // namespace

QVariantMap ScenarioEntry::toMap() const
{
    return {{QStringLiteral("time"), double(time.count()) / 1000}, {QStringLiteral("place"), place},
        {QStringLiteral("text"), text}, {QStringLiteral("outcome"), outcome},
        {QStringLiteral("detail"), detail}, {QStringLiteral("expectation"), expectation},
        {QStringLiteral("seconds"), seconds}};
}

// A list of steps that are done one after another; those that are together have one each.
class ScenarioPlayer::Strand final : public QObject
{
public:
    using Time = PhoneClock::Time;

    Strand(ScenarioPlayer &player, const std::vector<JsonNode> &steps, const ScenarioVariables &variables,
        std::function<void()> done)
        : m_player(player), m_done(std::move(done)), m_steps(int(steps.size())), m_time(player.m_clock.now()),
          m_timer(player.m_clock)
    {
        push({steps, variables, m_time, std::nullopt});
        connect(&m_timer, &PhoneTimer::timeout, this, [this] { onTime(); });
        m_patience.setSingleShot(true);
        m_patience.setTimerType(Qt::PreciseTimer);
        connect(&m_patience, &QTimer::timeout, this, [this] { onPatienceEnded(); });
    }
    ~Strand() override { thaw(); }

    void go()
    {
        if (m_player.m_isPaused) {
            m_held = &Strand::go;
            return;
        }
        for (int steps = 0; next(); ++steps) {
            if (steps < MostAtOnce)
                continue;
            // Others have their turn, while which no time passes for the phone.
            freeze();
            QTimer::singleShot(0, this, [this] {
                thaw();
                go();
            });
            return;
        }
    }

    // No real time passes for what is expected either.
    void pause()
    {
        m_realBefore = waited();
        m_real.invalidate();
        if (m_patience.isActive())
            m_patienceLeft = m_patience.remainingTime();
        m_patience.stop();
    }
    void resume()
    {
        m_real.start();
        if (m_patienceLeft)
            m_patience.start(*std::exchange(m_patienceLeft, std::nullopt));
        if (const auto held = std::exchange(m_held, nullptr))
            (this->*held)();
    }

    // How many of its steps have begun, and of how many.
    [[nodiscard]] std::pair<int, int> progress() const
    {
        return {m_frames.empty() ? m_steps : int(m_frames.front().next), m_steps};
    }

    // Leaves everything as it is; the clock may be gone after that.
    void halt()
    {
        m_timer.stop();
        m_patience.stop();
        m_waiting.reset();
    }

    // Whether what it waits for has come.
    void check()
    {
        if (!m_waiting || m_player.m_isPaused)
            return;
        const ScenarioStep &step = *m_waiting;
        if (step.kind == ScenarioStep::ExpectRequest) {
            while (m_found < step.times && m_player.takeRequest(step))
                ++m_found;
            if (m_found < step.times)
                return;
        } else if (step.condition->holds() == step.throughout) {
            return;
        }
        endWait(!step.throughout);
    }

private:
    struct Frame
    {
        std::vector<JsonNode> steps;
        ScenarioVariables variables;
        Time began;
        std::optional<ScenarioStep> loop; // whose body it is
        int round = 0;
        std::size_t next = 0;
    };
    struct Ramp
    {
        ScenarioStep step;
        Time began;
        int ticks = 0; // so far
        QString last;
    };

    void push(Frame frame) { m_frames.push_back(std::move(frame)); }

    // Does one step; false where there is something to wait for, or nothing left.
    bool next()
    {
        if (m_player.m_state != Playing)
            return false;
        if (m_frames.empty()) {
            m_done();
            return false;
        }
        Frame &frame = m_frames.back();
        if (frame.next == frame.steps.size()) {
            endRound();
            return true;
        }
        try {
            const ScenarioStep step = m_player.m_scenario->step(frame.steps[frame.next], frame.variables);
            if (step.at && frame.began + *step.at > m_time) {
                m_time = frame.began + *step.at;
                m_timer.start(std::max(m_time - m_player.m_clock.now(), Time(0)));
                return false;
            }
            ++frame.next;
            return perform(step);
        } catch (const Error &error) { // a file that was right when it was loaded
            m_player.m_problem = error.text();
            m_player.end(Failed);
            return false;
        }
    }

    void endRound()
    {
        const Frame ended = std::move(m_frames.back());
        m_frames.pop_back();
        if (ended.loop)
            beginRound(*ended.loop, ended.round + 1);
    }

    void beginRound(const ScenarioStep &step, int round)
    {
        const bool isRepeat = step.kind == ScenarioStep::Repeat;
        if (round >= (isRepeat ? step.times : int(step.values.size()))
            || (isRepeat && step.condition && !step.condition->holds()))
            return;
        Frame frame{step.bodies.front(), step.variables, m_time, step, round};
        if (!step.variable.isEmpty())
            frame.variables.insert(
                step.variable, isRepeat ? QVariant(double(round + 1)) : step.values[round]);
        push(std::move(frame));
    }

    bool perform(const ScenarioStep &step)
    {
        switch (step.kind) {
        case ScenarioStep::Tell:
            tell(step, step.words);
            return true;
        case ScenarioStep::Say:
            m_player.note(step, "said");
            return true;
        case ScenarioStep::Wait:
            m_player.note(step, "done");
            m_time += step.time + Time(qRound64((m_player.random() * 2 - 1) * double(step.jitter.count())));
            m_timer.start(std::max(m_time - m_player.m_clock.now(), Time(0)));
            return false;
        case ScenarioStep::When:
        case ScenarioStep::Expect:
        case ScenarioStep::ExpectRequest:
            return wait(step);
        case ScenarioStep::Ramp:
            m_player.note(step, "done");
            m_ramp = Ramp{step, m_time, 0, {}};
            onTime();
            return false;
        case ScenarioStep::Repeat:
        case ScenarioStep::ForEach:
            beginRound(step, 0);
            return true;
        case ScenarioStep::Include:
            push({step.bodies.front(), step.variables, m_time, std::nullopt});
            return true;
        case ScenarioStep::Together:
            return branch(step);
        }
        return true;
    }

    void tell(const ScenarioStep &step, const QStringList &words, bool isNews = true)
    {
        try {
            m_player.m_order(words);
            if (isNews)
                m_player.note(step, "done");
        } catch (const Error &error) {
            m_player.fail(step, error.text());
        }
    }

    bool wait(const ScenarioStep &step)
    {
        m_waiting = step;
        m_found = 0;
        m_realBefore = 0;
        m_real.start();
        m_isInCheck = true;
        check();
        m_isInCheck = false;
        if (!m_waiting)
            return true;
        if (step.kind == ScenarioStep::When)
            m_player.note(step, "waiting");
        if (step.within)
            m_timer.start(*step.within);
        return false;
    }

    // It has come, or its time is over.
    void endWait(bool isGood, const QString &reason = {})
    {
        const ScenarioStep step = *m_waiting;
        m_waiting.reset();
        m_timer.stop();
        m_patience.stop();
        thaw();
        m_time = m_player.m_clock.now();
        const double seconds = double(waited()) / 1000;
        if (isGood) {
            m_player.note(step, step.isExpectation() ? "passed" : "done", {}, seconds);
        } else {
            const QString values = step.condition ? step.condition->valuesText() : QString();
            m_player.fail(step, reason.isEmpty() ? values : reason, seconds);
        }
        if (!m_isInCheck)
            go();
    }

    // The real milliseconds, without those of pauses.
    [[nodiscard]] qint64 waited() const { return m_realBefore + (m_real.isValid() ? m_real.elapsed() : 0); }

    void onTime()
    {
        // Who pauses a scenario can move the phone's time on by hand.
        if (m_player.m_isPaused) {
            m_held = &Strand::onTime;
            return;
        }
        if (m_ramp)
            return goOnRamping();
        if (!m_waiting)
            return go();
        // Applications are not faster because the phone's time is.
        const auto left = m_waiting->within->count() - waited();
        if (left <= 0)
            return onPatienceEnded();
        freeze();
        m_patience.start(int(left));
    }

    void onPatienceEnded()
    {
        const ScenarioStep &step = *m_waiting;
        if (step.kind == ScenarioStep::ExpectRequest) {
            endWait(false,
                step.times > 1 ? QStringLiteral("it came %1 times").arg(m_found)
                               : QStringLiteral("it did not come"));
        } else {
            endWait(step.throughout);
        }
    }

    void goOnRamping()
    {
        Ramp &ramp = *m_ramp;
        const auto &[from, to, jitter, decimals, every] = ramp.step.ramp;
        const Time passed = std::min(every * ramp.ticks++, ramp.step.time);
        const bool isOver = passed == ramp.step.time;
        const double part = isOver ? 1 : double(passed.count()) / double(ramp.step.time.count());
        double value = from + (to - from) * part;
        // What is random stays between the ends, which are what the order takes.
        if (!isOver && jitter > 0)
            value = std::clamp(
                value + (m_player.random() * 2 - 1) * jitter, std::min(from, to), std::max(from, to));
        const QString text = ramp.step.rampText(value);
        const ScenarioStep step = ramp.step;
        const bool isNews = text != ramp.last;
        ramp.last = text;
        m_time = ramp.began + passed;
        if (isOver)
            m_ramp.reset();
        else
            m_timer.start(std::max(
                ramp.began + std::min(every * ramp.ticks, step.time) - m_player.m_clock.now(), Time(0)));
        if (isNews)
            tell(step, step.words + QStringList{text}, false);
        if (isOver)
            go();
    }

    bool branch(const ScenarioStep &step)
    {
        m_branches = int(step.bodies.size());
        if (m_branches == 0)
            return true;
        for (const auto &body : step.bodies) {
            Strand &strand = *m_branchStrands.emplace_back(
                std::make_unique<Strand>(m_player, body, step.variables, [this] { onBranchDone(); }));
            strand.m_time = m_time;
            strand.m_frames.front().began = m_time;
            m_player.m_strands.emplace_back(&strand);
        }
        for (const auto &strand : m_branchStrands)
            strand->go();
        return false;
    }

    // The last of them may be in the middle of its steps.
    void onBranchDone()
    {
        if (--m_branches > 0)
            return;
        m_time = m_player.m_clock.now();
        freeze();
        QTimer::singleShot(0, this, [this] {
            m_branchStrands.clear();
            thaw();
            go();
        });
    }

    void freeze()
    {
        if (!std::exchange(m_isFrozen, true))
            m_player.freeze();
    }
    void thaw()
    {
        if (std::exchange(m_isFrozen, false))
            m_player.unfreeze();
    }

    ScenarioPlayer &m_player;
    std::function<void()> m_done;
    int m_steps; // of its own
    std::vector<Frame> m_frames;
    Time m_time; // up to which its steps are done
    PhoneTimer m_timer;
    QTimer m_patience; // in which applications may still do what is expected
    std::optional<ScenarioStep> m_waiting;
    bool m_isInCheck = false;
    int m_found = 0; // requests, of those that are expected
    QElapsedTimer m_real; // since it waits, or goes on to
    qint64 m_realBefore = 0; // that it had waited when it was paused
    std::optional<int> m_patienceLeft;
    void (Strand::*m_held)() = nullptr; // what a pause keeps it from
    std::optional<Ramp> m_ramp;
    std::vector<std::unique_ptr<Strand>> m_branchStrands;
    int m_branches = 0; // that are not done
    bool m_isFrozen = false;
};

ScenarioPlayer::ScenarioPlayer(std::unique_ptr<Scenario> scenario, PhoneClock &clock, const Tree &tree,
    Order order, const ScenarioOptions &options)
    : m_scenario(std::move(scenario)), m_clock(clock), m_order(std::move(order)), m_options(options),
      m_random(options.seed.value_or(m_scenario->seed()))
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
    m_speedBefore = m_clock.speed();
    if (m_options.speed)
        m_clock.setSpeed(*m_options.speed);
    m_began = m_clock.now();
    m_main = std::make_unique<Strand>(*this, m_scenario->steps(), m_scenario->variables(),
        [this] { end(m_problem.isEmpty() ? Passed : Failed); });
    m_strands.emplace_back(m_main.get());
    m_main->go();
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
        freeze();
    const auto strands = m_strands;
    for (const auto &strand : strands) {
        if (strand && paused)
            strand->pause();
        else if (strand && m_state == Playing)
            strand->resume();
    }
    if (!paused) {
        unfreeze();
        evaluateLater(); // what it waits for may have come meanwhile
    }
}

void ScenarioPlayer::setSpeed(double speed)
{
    if (m_state != Playing)
        return;
    m_options.speed = speed;
    if (!m_main)
        return; // it counts from the start on
    if (m_frozen > 0)
        m_speedOfFrozen = speed;
    else
        m_clock.setSpeed(speed);
}

std::pair<int, int> ScenarioPlayer::progress() const
{
    return m_main ? m_main->progress() : std::pair(0, 0);
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
    if (m_main && (m_options.speed || m_frozen > 0))
        m_clock.setSpeed(m_options.speed ? m_speedBefore : m_speedOfFrozen);
    Q_EMIT finished();
}

void ScenarioPlayer::note(
    const ScenarioStep &step, const char *outcome, const QString &detail, double seconds)
{
    const bool hasEnded = qstrcmp(outcome, "waiting") != 0;
    Q_EMIT logged({m_clock.now() - m_began, step.place(), step.text, QString::fromLatin1(outcome), detail,
        hasEnded && step.isExpectation() ? step.name : QString(), seconds});
}

void ScenarioPlayer::fail(const ScenarioStep &step, const QString &reason, double seconds)
{
    note(step, "failed", reason, seconds);
    if (m_problem.isEmpty())
        m_problem = step.place() + QLatin1String(": ") + step.text + QLatin1String(": ") + reason;
    if (!m_options.keepGoing)
        end(Failed);
}

void ScenarioPlayer::onAsked(const QString &path, const QVariantMap &message)
{
    if (m_asked.size() == MostAsked)
        m_asked.removeFirst();
    m_asked.append({path, message});
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

// Each request meets one expectation.
bool ScenarioPlayer::takeRequest(const ScenarioStep &step)
{
    for (qsizetype i = 0; i < m_asked.size(); ++i) {
        const QVariant fields = step.request->read(m_asked[i].path, m_asked[i].message);
        if (!fields.isValid() || !step.matches(fields.toMap()))
            continue;
        m_asked.removeAt(i);
        return true;
    }
    return false;
}

// From 0 up to 1.
double ScenarioPlayer::random()
{
    return m_random.generateDouble();
}

void ScenarioPlayer::freeze()
{
    if (m_frozen++ == 0) {
        m_speedOfFrozen = m_clock.speed();
        m_clock.setSpeed(0);
    }
}

void ScenarioPlayer::unfreeze()
{
    if (--m_frozen == 0 && m_state == Playing)
        m_clock.setSpeed(m_speedOfFrozen);
}

} // namespace oz::services
