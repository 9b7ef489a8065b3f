#pragma once

#include "publishing/ControlObject.hpp"
#include "publishing/StatePublisher.hpp"
#include "scenario/Condition.hpp"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <memory>
#include <vector>

namespace oz::services {

/*!
 * Tells what the phone is like and what applications ask of it, for who asks for it through the daemon's
 * control object:
 * - "value" ("dat": "name") answers with the "value" of that name; without one where it is not known.
 * - "await" ("dat": "condition", and "within", seconds) answers when the condition holds, or with ETIMEDOUT
 * and its values when the time is over.
 * - "observe" begins to keep the requests of applications, and to publish their "count" in the object
 * "/pps/system/ozdeviced/requests", which is for the daemon's own user only.
 * - "requests" ("dat": "from", and where wanted "request" and "with", as a scenario's expect-request has
 * them) answers with those from that number on, each with its "request", its "values", its "number" and, in
 * seconds since "observe", "at", and with the "next" number.
 */
class Observation : public QObject
{
    Q_OBJECT

public:
    explicit Observation(Tree &tree);

    [[nodiscard]] RequestTable requests();

private:
    struct Asked
    {
        qint64 number;
        double at;
        const AskedRequest *request;
        QVariantMap values;
    };
    struct Waiting
    {
        Answer answer;
        Condition condition;
        double seconds;
        std::unique_ptr<QTimer> timer;
    };

    void value(const QVariantMap &order, const Answer &answer) const;
    void await(const QVariantMap &order, const Answer &answer);
    void observe();
    void tellRequests(const QVariantMap &order, const Answer &answer);
    void onAsked(const QString &path, const QVariantMap &message);
    void evaluateLater();
    void evaluate();
    /*! Answers where the condition holds, or the time is over. */
    [[nodiscard]] static bool answers(const Waiting &waiting);

    const Tree &m_tree;
    QElapsedTimer m_clock; // since requests are kept
    std::vector<Asked> m_asked; // the newest
    qint64 m_next = 0; // number
    StatePublisher m_count;
    bool m_isCountPlanned = false;
    std::vector<Waiting> m_waiting;
    bool m_isEvaluationPlanned = false;
};

} // namespace oz::services
