#pragma once

#include "phone/ScenarioPlayer.hpp"
#include "publishing/ControlObject.hpp"

#include <QObject>
#include <QVariantMap>

#include <memory>
#include <vector>

namespace oz::services {

/*!
 * Plays scenarios on the simulated phone, one at a time, for who asks for it through the daemon's control
 * object:
 * - "play" ("dat": "file", and where wanted "speed", a number or "max", "seed", "keep-going", "variables",
 * and "check" to check the file alone): plays it, or says what is wrong with it. The answer has "description"
 * and "expectations", whether there are any.
 * - "scenario" ("dat": "from"): waits for what happens and answers with the "entries" of the log from that
 * number on, the "next" number, the "state" ("playing", "passed", "failed", "stopped") and the "problem".
 * - "stop-scenario" ends it.
 * - "public-values" lists what conditions can name.
 */
class ScenarioService : public QObject
{
    Q_OBJECT

public:
    /*! The phone as scenarios need it. Each may throw Error. */
    struct Phone
    {
        std::function<PhoneClock &()> clock;
        ScenarioPlayer::Order order;
        std::function<Scenario::CheckOrder()> makeCheck;
    };

    ScenarioService(const Tree &tree, Phone phone) : m_tree(tree), m_phone(std::move(phone)) { }

    /*! Loads the file that \a order names, and plays it; throws Error. */
    QVariantMap play(const QVariantMap &order);
    void stop(const QString &reason);
    [[nodiscard]] RequestTable requests();

Q_SIGNALS:
    void logged(const oz::services::ScenarioEntry &entry);
    void finished(oz::services::ScenarioPlayer::State state, const QString &problem);

private:
    struct Waiting
    {
        Answer answer;
        qsizetype from;
    };

    void onLogged(const ScenarioEntry &entry);
    void onFinished();
    void answerWaiting();
    [[nodiscard]] Reply tellFrom(qsizetype from) const;

    const Tree &m_tree;
    Phone m_phone;
    std::unique_ptr<ScenarioPlayer> m_player;
    QList<ScenarioEntry> m_entries; // the newest
    qsizetype m_dropped = 0; // that were before those
    std::vector<Waiting> m_waiting;
    bool m_isAnswerPlanned = false;
};

} // namespace oz::services
