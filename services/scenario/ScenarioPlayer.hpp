#pragma once

#include "scenario/PlayedTime.hpp"
#include "scenario/Scenario.hpp"
#include "scenario/UnusedRequests.hpp"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QRandomGenerator>

#include <memory>
#include <vector>

namespace oz::services {

/*! The outcome of a step. */
struct ScenarioEntry
{
    std::chrono::milliseconds time{0}; //!< of the phone, since the scenario began
    QString place; //!< "file:line"
    QString text;
    QString outcome; //!< "done", "waiting", "passed", "failed" or "said"
    QString detail; //!< why it failed
    QString expectation; //!< the name, of an expectation that has passed or failed
    double seconds = 0; //!< that it took, of the real time

    [[nodiscard]] QVariantMap toMap() const;
};

struct ScenarioOptions
{
    std::optional<double> speed; //!< of the phone's clock while it plays
    std::optional<quint32> seed; //!< of what is random, in the place of the file's
    bool keepGoing = false; //!< past what fails
};

/*!
 * Plays a scenario in the phone's time. An expectation has the real time too that it says: where the phone's
 * time goes faster, it stands still at the end of the expectation's until the real one is over.
 */
class ScenarioPlayer : public QObject
{
    Q_OBJECT

public:
    enum State { Playing, Passed, Failed, Stopped };
    /*! Tells the phone what the words of an order say; throws Error. */
    using Order = std::function<void(const QStringList &words)>;

    ScenarioPlayer(std::unique_ptr<Scenario> scenario, PhoneClock &clock, const Tree &tree, Order order,
        const ScenarioOptions &options);
    ~ScenarioPlayer() override;

    void start();
    /*! Ends it before it is over. */
    void stop(const QString &reason);
    /*! Has it stand still, and the phone's time with it, while it plays. What applications ask meanwhile
     * counts. */
    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const { return m_isPaused; }
    /*! The speed of the phone's clock until it ends; one of before comes back then. */
    void setSpeed(double speed);
    [[nodiscard]] double speed() const { return m_time.speed(); }
    /*! How many of the scenario's own steps are done or under way, and how many there are. */
    [[nodiscard]] std::pair<int, int> progress() const;
    /*! How much of the scenario is done, by the time that its steps plan or else by their number: 100 only
     * when it has passed. */
    [[nodiscard]] int percent() const;

    [[nodiscard]] State state() const { return m_state; }
    /*! "FILE:LINE: STEP: REASON" of the first step that failed, or why it was stopped. */
    [[nodiscard]] const QString &problem() const { return m_problem; }
    [[nodiscard]] const Scenario &scenario() const { return *m_scenario; }

Q_SIGNALS:
    void logged(const oz::services::ScenarioEntry &entry);
    /*! percent() has changed. */
    void progressed();
    /*! It is not Playing any more. */
    void finished();

private:
    class Strand; // ScenarioStrand.hpp

    void note(const ScenarioStep &step, const char *outcome, const QString &detail = {}, double seconds = 0);
    void fail(const ScenarioStep &step, const QString &reason, double seconds = 0);
    void end(State state);
    void pass(ScenarioStep::PlannedTime time);
    void onAsked(const QString &path, const QVariantMap &message);
    void evaluateLater();
    void evaluate();
    [[nodiscard]] double random();

    std::unique_ptr<Scenario> m_scenario;
    PlayedTime m_time;
    Order m_order;
    bool m_keepsGoing; // past what fails
    QRandomGenerator m_random;
    State m_state = Playing;
    bool m_isPaused = false;
    QString m_problem;
    ScenarioStep::PlannedTime m_planned{0}; // in all steps
    ScenarioStep::PlannedTime m_passed{0}; // of that
    bool m_isEvaluationPlanned = false;
    UnusedRequests m_unused;
    std::vector<QPointer<Strand>> m_strands;
    std::unique_ptr<Strand> m_main;
};

} // namespace oz::services
