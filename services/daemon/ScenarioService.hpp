#pragma once

#include "daemon/ApplicationWatch.hpp"
#include "publishing/ControlObject.hpp"
#include "publishing/StatePublisher.hpp"
#include "scenario/Recorder.hpp"
#include "scenario/ScenarioPlayer.hpp"

#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <memory>

namespace oz::services {

/*!
 * Plays scenarios on the simulated phone, one at a time, and records them, for who asks for it through the
 * daemon's control object:
 * - "play" ("dat": "file", and where wanted "speed", a number or "max", "seed", "keep-going", "variables",
 * and "check" to check the file alone): plays it, or says what is wrong with it. The answer has "description"
 * and "expectations", whether there are any. With "wait-for" ("open" or "request"; "none" is as without), the
 * scenario begins when an application has done that, or after "wait-limit" seconds (10) of the real time.
 * What applications do counts from before the answer on.
 * - "scenario" ("dat": "from") answers with what is published of the scenario, the "entries" of its log from
 * that number on, and the "next" number. The "state" is "playing" as long as there are more entries.
 * - "stop-scenario" ends it; "pause-scenario" has it and the phone's time stand still, "resume-scenario" has
 * them go on, "scenario-speed" ("dat": "speed", as for "play") changes the speed.
 * - "public-values" lists what conditions can name.
 * - "about-scenario" ("dat": "file") answers with what the file says about itself.
 * - "record" ("dat": "facilities", all that can be recorded where none are named, "keep-identifiers", and
 * "report" to say what becomes of sources too) begins to record what the device does, in the place of what
 * was recorded before.
 * - "recorded" ("dat": "from", and "end" to end it) answers with the "steps" from that number on, their
 * "count", the "phone" of the recording, and, of "texts" for people, the same as the recording masks them.
 *
 * "/pps/system/ozdeviced/scenario", for the daemon's own user only, has the scenario that was played last:
 * its "number", which is 0 where there is none, its "file", what the answer to "play" said, the "state"
 * ("playing", "passed", "failed", "stopped"), whether it has "begun", and "late" where no application came in
 * time, whether it is "paused", its "speed", the "problem", the number of the "step" among the file's own
 * "steps", the "percent" of it that are done, and the "count" of the entries of its log.
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
        Recorder::SinkNames sinkNames = {};
    };

    ScenarioService(Tree &tree, Phone phone);

    /*! Loads the file that \a order names, and plays it; throws Error. */
    QVariantMap play(const QVariantMap &order);
    void stop(const QString &reason);
    [[nodiscard]] RequestTable requests();

Q_SIGNALS:
    void logged(const oz::services::ScenarioEntry &entry);
    void finished(oz::services::ScenarioPlayer::State state, const QString &problem);

private:
    [[nodiscard]] ScenarioPlayer &playing() const; // throws Error where there is none
    void setPaused(bool paused);
    enum class Begin { InTime, Late };
    void begin(Begin when);
    void onLogged(const ScenarioEntry &entry);
    void onFinished();
    void publish();
    void publishLater();
    [[nodiscard]] qsizetype count() const { return m_dropped + m_entries.size(); }
    [[nodiscard]] QVariantMap state() const;
    [[nodiscard]] QVariantMap logFrom(qsizetype from) const;
    void record(const QVariantMap &order);
    [[nodiscard]] QVariantMap recorded(const QVariantMap &order);

    const Tree &m_tree;
    Phone m_phone;
    std::unique_ptr<ScenarioPlayer> m_player;
    std::unique_ptr<ApplicationWatch> m_application; // while the scenario waits for it
    QTimer m_waitLimit;
    bool m_hasBegun = false;
    bool m_isLate = false;
    int m_plays = 0;
    QVariantMap m_told; // of the scenario
    QList<ScenarioEntry> m_entries; // the newest
    qsizetype m_dropped = 0; // that were before those
    StatePublisher m_object;
    bool m_isPublishPlanned = false;
    std::unique_ptr<Recorder> m_recorder;
};

} // namespace oz::services
