#pragma once

#include "publishing/ControlObject.hpp"
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
 * - "observe" begins to keep the requests of applications.
 * - "requests" ("dat": "from", and where wanted "request", "with", "times" and "within", as a scenario's
 * expect-request has them) answers with those from that number on, each with its "request", its "values", its
 * "number" and, in seconds since "observe", "at". It waits until there are so many, or answers with ETIMEDOUT
 * and what was asked for.
 */
class Observation : public QObject
{
    Q_OBJECT

public:
    explicit Observation(const Tree &tree);

    [[nodiscard]] RequestTable requests();

private:
    struct Asked
    {
        qint64 number;
        double at;
        const AskedRequest *request;
        QVariantMap values;
    };
    using Matches = std::function<bool(const Asked &asked)>;
    /*! What is waited for: its reply where there is one yet, and the one when the time is over. */
    struct Waiting
    {
        Answer answer;
        std::function<std::optional<Reply>()> reply;
        std::function<Reply()> late;
        std::unique_ptr<QTimer> timer;
    };

    void value(const QVariantMap &order, const Answer &answer) const;
    void await(const QVariantMap &order, const Answer &answer);
    void observe();
    void tellRequests(const QVariantMap &order, const Answer &answer);
    void wait(const QVariantMap &order, Waiting waiting);
    void onAsked(const QString &path, const QVariantMap &message);
    void evaluateLater();
    void evaluate();
    [[nodiscard]] QVariantList found(const Matches &matches) const;

    const Tree &m_tree;
    QElapsedTimer m_clock; // since requests are kept
    std::vector<Asked> m_asked; // the newest
    qint64 m_next = 0; // number
    std::vector<Waiting> m_waiting;
    bool m_isEvaluationPlanned = false;
};

} // namespace oz::services
