#pragma once

#include "scenario/ScenarioPlayer.hpp"
#include "scenario/Task.hpp"

#include <QTimer>

namespace oz::services {

/*! The real time that passes, without that of pauses. */
class Stopwatch
{
public:
    void start()
    {
        m_before = 0;
        m_running.start();
    }
    void pause()
    {
        m_before = elapsed();
        m_running.invalidate();
    }
    void resume() { m_running.start(); }
    /*! Milliseconds. */
    [[nodiscard]] qint64 elapsed() const
    {
        return m_before + (m_running.isValid() ? m_running.elapsed() : 0);
    }

private:
    QElapsedTimer m_running;
    qint64 m_before = 0;
};

/*! A list of steps of a scenario that are done one after another; those that are together have one each. */
class ScenarioPlayer::Strand final : public QObject
{
public:
    using Time = PhoneClock::Time;
    using Steps = std::vector<JsonNode>;

    /*! Its steps begin at the phone's \a time; \a done is called after the last one. */
    Strand(ScenarioPlayer &player, Time time, std::function<void()> done);
    ~Strand() override;

    void begin(const Steps &steps, const ScenarioVariables &variables);
    void pause();
    void resume();
    /*! How many of its steps have begun. */
    [[nodiscard]] int begun() const { return m_begun; }
    /*! Leaves everything as it is; the clock may be gone after that. */
    void halt();
    /*! Goes on where what it waits for has come. */
    void check();

private:
    /*! Where a coroutine waits until the strand goes on. */
    struct Suspension
    {
        Strand &strand;
        [[nodiscard]] bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) const { strand.m_waiting = waiting; }
        void await_resume() const { strand.m_atOnce = 0; }
    };

    [[nodiscard]] bool isPlaying() const { return m_player.m_state == Playing; }
    [[nodiscard]] Suspension suspended() { return {*this}; }
    void goOn();
    void freeze();
    void thaw();

    Task playAll(Steps steps, ScenarioVariables variables);
    Task doAll(const Steps &steps, const ScenarioVariables &variables, int *begun = nullptr);
    Task perform(const ScenarioStep &step);
    Task passTo(Time time);
    Task letOthers();
    Task wait(const ScenarioStep &step);
    Task waitUntilHandled(const ScenarioStep &step);
    Task ramp(const ScenarioStep &step);
    Task loop(const ScenarioStep &step);
    Task branch(const ScenarioStep &step);
    void tell(const ScenarioStep &step, const QStringList &words, bool isNews);

    ScenarioPlayer &m_player;
    std::function<void()> m_done;
    Time m_time; // up to which its steps are done
    PhoneTimer m_timer;
    QTimer m_realTimer; // while the phone's time stands still for what is expected
    std::optional<int> m_realLeft; // of that timer, while it is paused
    QTimer m_pollTimer; // while it waits for what nothing in the tree tells
    Stopwatch m_waited;
    std::function<bool()> m_hasCome; // what it waits for, if anything
    std::coroutine_handle<> m_waiting;
    bool m_isHeld = false; // by a pause
    bool m_isFrozen = false; // the phone's time, for this strand
    int m_atOnce = 0; // steps since it waited
    int m_begun = 0;
    Task m_task; // the first to go, as it uses the others
};

} // namespace oz::services
