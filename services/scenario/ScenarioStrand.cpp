#include "scenario/ScenarioStrand.hpp"

#include "pps/PpsMark.hpp"
#include "source/Error.hpp"

#include <oz/DeviceRoot.hpp>

#include <algorithm>

namespace oz::services {

namespace {

constexpr int MostAtOnce = 100; // steps in one turn of the event loop
constexpr int PollEvery = 2; // milliseconds
// One in which connections are accepted, one in which their messages are read.
constexpr int TurnsForRequests = 2;

} // namespace

ScenarioPlayer::Strand::Strand(ScenarioPlayer &player, Time time, std::function<void()> done)
    : m_player(player), m_done(std::move(done)), m_time(time), m_timer(player.m_time.clock())
{
    connect(&m_timer, &PhoneTimer::timeout, this, &Strand::goOn);
    m_realTimer.setSingleShot(true);
    m_realTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_realTimer, &QTimer::timeout, this, &Strand::goOn);
    connect(&m_pollTimer, &QTimer::timeout, this, &Strand::check);
}

ScenarioPlayer::Strand::~Strand()
{
    thaw();
}

void ScenarioPlayer::Strand::begin(const Steps &steps, const ScenarioVariables &variables)
{
    m_task = playAll(steps, variables);
}

// The phone's time can be moved on by hand while the scenario is paused.
void ScenarioPlayer::Strand::goOn()
{
    if (m_player.m_isPaused)
        m_isHeld = true;
    else if (const auto waiting = std::exchange(m_waiting, nullptr))
        waiting.resume();
}

// No real time passes for what is expected either.
void ScenarioPlayer::Strand::pause()
{
    m_waited.pause();
    if (m_realTimer.isActive())
        m_realLeft = m_realTimer.remainingTime();
    m_realTimer.stop();
}

void ScenarioPlayer::Strand::resume()
{
    m_waited.resume();
    if (m_realLeft)
        m_realTimer.start(*std::exchange(m_realLeft, std::nullopt));
    if (std::exchange(m_isHeld, false))
        goOn();
}

void ScenarioPlayer::Strand::halt()
{
    m_timer.stop();
    m_realTimer.stop();
    m_pollTimer.stop();
    m_hasCome = nullptr;
    m_waiting = nullptr;
}

void ScenarioPlayer::Strand::check()
{
    if (!m_hasCome || m_player.m_isPaused || !m_hasCome())
        return;
    m_timer.stop();
    m_realTimer.stop();
    goOn();
}

void ScenarioPlayer::Strand::freeze()
{
    if (!std::exchange(m_isFrozen, true))
        m_player.m_time.freeze();
}

void ScenarioPlayer::Strand::thaw()
{
    if (std::exchange(m_isFrozen, false))
        m_player.m_time.unfreeze();
}

Task ScenarioPlayer::Strand::playAll(Steps steps, ScenarioVariables variables)
{
    try {
        co_await doAll(steps, variables, &m_begun);
    } catch (const Error &error) { // a file that was right when it was loaded
        m_player.m_problem = error.text();
        m_player.end(Failed);
    }
    if (isPlaying())
        m_done();
}

Task ScenarioPlayer::Strand::doAll(const Steps &steps, const ScenarioVariables &variables, int *begun)
{
    const Time began = m_time;
    for (const JsonNode &node : steps) {
        const ScenarioStep step = m_player.m_scenario->step(node, variables);
        if (step.at && began + *step.at > m_time)
            co_await passTo(began + *step.at);
        if (begun)
            ++*begun;
        co_await perform(step);
        if (!isPlaying())
            co_return;
        if (++m_atOnce > MostAtOnce)
            co_await letOthers();
    }
}

Task ScenarioPlayer::Strand::perform(const ScenarioStep &step)
{
    switch (step.kind) {
    case ScenarioStep::Tell:
        tell(step, step.words, true);
        co_return;
    case ScenarioStep::Say:
        m_player.note(step, "said");
        co_return;
    case ScenarioStep::Wait:
        m_player.note(step, "done");
        co_await passTo(
            m_time + step.time + Time(qRound64((m_player.random() * 2 - 1) * double(step.jitter.count()))));
        co_return;
    case ScenarioStep::When:
    case ScenarioStep::Expect:
    case ScenarioStep::ExpectRequest:
        co_await wait(step);
        co_return;
    case ScenarioStep::Handled:
        co_await waitUntilHandled(step);
        co_return;
    case ScenarioStep::Ramp:
        m_player.note(step, "done");
        co_await ramp(step);
        co_return;
    case ScenarioStep::Repeat:
    case ScenarioStep::ForEach:
        co_await loop(step);
        co_return;
    case ScenarioStep::Include:
        co_await doAll(step.bodies.front(), step.variables);
        co_return;
    case ScenarioStep::Together:
        co_await branch(step);
        co_return;
    }
}

Task ScenarioPlayer::Strand::passTo(Time time)
{
    const Time before = std::exchange(m_time, time);
    m_timer.start(std::max(time - m_player.m_time.now(), Time(0)));
    co_await suspended();
    m_player.pass(time - before);
}

// Others have their turn, while no time passes for the phone.
Task ScenarioPlayer::Strand::letOthers()
{
    freeze();
    QTimer::singleShot(0, this, &Strand::goOn);
    co_await suspended();
    thaw();
}

Task ScenarioPlayer::Strand::wait(const ScenarioStep &step)
{
    int found = 0; // requests
    bool isCome = false;
    const std::function<bool()> hasCome = [&] {
        if (step.kind == ScenarioStep::ExpectRequest) {
            while (found < step.times && m_player.m_unused.take(step))
                ++found;
            isCome = found == step.times;
        } else {
            isCome = step.condition->holds() != step.throughout;
        }
        return isCome;
    };
    m_waited.start();
    if (!hasCome()) {
        if (step.kind == ScenarioStep::When)
            m_player.note(step, "waiting");
        m_hasCome = hasCome;
        if (step.within)
            m_timer.start(*step.within);
        co_await suspended();
        // Applications are not faster because the phone's time is.
        if (const qint64 left = step.within ? step.within->count() - m_waited.elapsed() : 0;
            !isCome && left > 0) {
            freeze();
            m_realTimer.start(int(left));
            co_await suspended();
            thaw();
        }
        m_hasCome = nullptr;
    }
    m_time = m_player.m_time.now();
    if (step.throughout)
        m_player.pass(*step.within);
    const double seconds = double(m_waited.elapsed()) / 1000;
    if (isCome != step.throughout)
        m_player.note(step, step.isExpectation() ? "passed" : "done", {}, seconds);
    else if (step.kind != ScenarioStep::ExpectRequest)
        m_player.fail(step, step.condition->valuesText(), seconds);
    else
        m_player.fail(step,
            QStringLiteral("%1 of %2 came; ").arg(found).arg(step.times) + m_player.m_unused.text(), seconds);
}

// No time passes for the phone meanwhile, so nothing else happens to the applications.
Task ScenarioPlayer::Strand::waitUntilHandled(const ScenarioStep &step)
{
    PpsMark mark(deviceRoot());
    if (mark.set() != 0) {
        m_player.fail(step,
            QStringLiteral(
                "only the applications of a phone of its own can be waited for, as under `ozdevice "
                "run` and in the test kits"));
        co_return;
    }
    bool isAnswered = false;
    m_waited.start();
    freeze();
    m_hasCome = [&] { return isAnswered = mark.isAnswered(); };
    m_realTimer.start(int(step.within->count()));
    m_pollTimer.start(PollEvery);
    co_await suspended();
    m_pollTimer.stop();
    m_hasCome = nullptr;
    if (!isAnswered)
        isAnswered = mark.isAnswered();
    // The requests that applications made meanwhile count for the next step.
    for (int turn = 0; turn < TurnsForRequests; ++turn)
        co_await letOthers();
    m_time = m_player.m_time.now();
    const double seconds = double(m_waited.elapsed()) / 1000;
    if (isAnswered)
        m_player.note(step, "done", {}, seconds);
    else
        m_player.fail(step, mark.busyText(*step.within), seconds);
}

Task ScenarioPlayer::Strand::ramp(const ScenarioStep &step)
{
    const auto &[from, to, jitter, every] = step.ramp;
    const Time began = m_time;
    QString told;
    for (int tick = 0;; ++tick) {
        const Time passed = std::min(every * tick, step.time);
        if (tick > 0)
            co_await passTo(began + passed);
        const bool isOver = passed == step.time;
        const double part = isOver ? 1 : double(passed.count()) / double(step.time.count());
        double value = from + (to - from) * part;
        // Random values stay between the ends, which the order is known to take.
        if (!isOver && jitter > 0) {
            value = std::clamp(
                value + (m_player.random() * 2 - 1) * jitter, std::min(from, to), std::max(from, to));
        }
        if (const QString text = step.rampText(value); std::exchange(told, text) != text)
            tell(step, step.words + QStringList{text}, false);
        if (isOver || !isPlaying())
            co_return;
    }
}

Task ScenarioPlayer::Strand::loop(const ScenarioStep &step)
{
    const bool isRepeat = step.kind == ScenarioStep::Repeat;
    const int rounds = isRepeat ? step.times : int(step.values.size());
    for (int round = 0; round < rounds && isPlaying(); ++round) {
        if (isRepeat && step.condition && !step.condition->holds()) {
            m_player.pass(
                m_player.m_scenario->plannedTime(step.bodies.front(), step.variables) * (rounds - round));
            co_return;
        }
        ScenarioVariables variables = step.variables;
        if (!step.variable.isEmpty())
            variables.insert(step.variable, isRepeat ? QVariant(double(round + 1)) : step.values[round]);
        co_await doAll(step.bodies.front(), variables);
        if (++m_atOnce > MostAtOnce) // a body may be empty
            co_await letOthers();
    }
}

Task ScenarioPlayer::Strand::branch(const ScenarioStep &step)
{
    std::size_t open = step.bodies.size();
    if (open == 0)
        co_return;
    // The last of them may be in the middle of its steps.
    const std::function<void()> onDone = [this, &open] {
        if (--open > 0)
            return;
        m_time = m_player.m_time.now();
        freeze();
        QTimer::singleShot(0, this, &Strand::goOn);
    };
    std::vector<std::unique_ptr<Strand>> strands;
    for (std::size_t i = 0; i < step.bodies.size(); ++i) {
        strands.push_back(std::make_unique<Strand>(m_player, m_time, onDone));
        m_player.m_strands.emplace_back(strands.back().get());
    }
    for (std::size_t i = 0; i < step.bodies.size() && isPlaying(); ++i)
        strands[i]->begin(step.bodies[i], step.variables);
    if (!isPlaying())
        co_return;
    co_await suspended();
    strands.clear();
    thaw();
}

void ScenarioPlayer::Strand::tell(const ScenarioStep &step, const QStringList &words, bool isNews)
{
    try {
        m_player.m_order(words);
        if (isNews)
            m_player.note(step, "done");
    } catch (const Error &error) {
        m_player.fail(step, error.text());
    }
}

} // namespace oz::services
