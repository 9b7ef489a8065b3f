#include "core/Mishaps.hpp"

namespace oz::services {

namespace {
constexpr int MaxErrno = 4095;
}

std::vector<SimVerb> Mishaps::verbs()
{
    const auto verb = [this](const QString &name, const QStringList &arguments, const QString &help,
                          Mishap::Kind kind, int most) {
        return SimVerb{name, arguments, help, [this, kind, most](const QStringList &words) {
                           const int number = words.isEmpty() ? 0 : SimArgument::integer(words[0], 1, most);
                           m_next = Mishap{kind, number};
                       }};
    };
    std::vector<SimVerb> verbs{
        verb(QStringLiteral("fail-with"), {QStringLiteral("ERRNO")},
            QStringLiteral("answers the next request with an error"), Mishap::FailWith, MaxErrno),
        verb(QStringLiteral("answer-late"), {QStringLiteral("MILLISECONDS")},
            QStringLiteral("lets the next request wait"), Mishap::AnswerLate, 3'600'000),
        verb(QStringLiteral("never-answer"), {}, QStringLiteral("leaves the next request unanswered"),
            Mishap::NeverAnswer, 0),
        verb(QStringLiteral("die-on-request"), {},
            QStringLiteral("ends the connection at the next request, as a service that dies"),
            Mishap::DieOnRequest, 0),
        verb(QStringLiteral("answer-rubbish"), {},
            QStringLiteral("answers the next request with what means nothing"), Mishap::AnswerRubbish, 0),
    };
    if (m_requests.isEmpty())
        return verbs;
    QStringList words;
    for (const auto &request : m_requests)
        words.append(request.first);
    verbs.push_back({QStringLiteral("fail-next"), {words.join(u'|'), QStringLiteral("ERRNO")},
        QStringLiteral("answers the next request of this kind with an error"),
        [this, words](const QStringList &given) {
            const QString &message = m_requests[SimArgument::oneOf(given[0], words)].second;
            m_failing.insert(message, SimArgument::integer(given[1], 1, MaxErrno));
        }});
    return verbs;
}

std::optional<Mishap> Mishaps::take(const QString &message)
{
    if (m_next)
        return std::exchange(m_next, std::nullopt);
    const int error = m_failing.take(message);
    return error ? std::optional(Mishap{Mishap::FailWith, error}) : std::nullopt;
}

} // namespace oz::services
