#pragma once

#include "core/SimulatedPhone.hpp"

#include <optional>

namespace oz::services {

/*! What goes wrong with a request to a control object. */
struct Mishap
{
    enum Kind {
        FailWith, //!< the answer is the error \a number
        AnswerLate, //!< the request is handled after \a number milliseconds, if its client waits for so long
        NeverAnswer, //!< nothing answers while the client waits
        DieOnRequest, //!< the connection ends without an answer
        AnswerRubbish, //!< the answer is malformed
    };

    Kind kind = FailWith;
    int number = 0;
};

/*! What the errors of a service's answers are called, and their range. */
struct MishapErrors
{
    QString name = QStringLiteral("ERRNO");
    int least = 1;
    int most = 4095;
};

/*! Lets the next request to one control object of the simulated phone go wrong, as it is told. */
class Mishaps
{
public:
    /*! The words of requests, and their messages. */
    using Requests = QList<std::pair<QString, QString>>;

    Mishaps() = default;
    /*!
     * Can be told to fail the next one of each of \a requests, too, with \a errors. Only \a kinds can happen
     * to any request; none are all of them.
     */
    explicit Mishaps(
        const Requests &requests, const MishapErrors &errors = {}, const QList<Mishap::Kind> &kinds = {})
        : m_requests(requests), m_errors(errors), m_kinds(kinds)
    {
    }

    /*! What it can be told, for the verbs of a simulated part; they refer to this instance. */
    [[nodiscard]] std::vector<SimVerb> verbs();
    /*! What goes wrong with the request \a message that has come; each mishap happens once. */
    [[nodiscard]] std::optional<Mishap> take(const QString &message);

private:
    std::optional<Mishap> m_next;
    Requests m_requests;
    MishapErrors m_errors;
    QList<Mishap::Kind> m_kinds;
    QMap<QString, int> m_failing; // the errors of the next requests, by their messages
};

} // namespace oz::services
