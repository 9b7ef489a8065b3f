#include "core/Mishaps.hpp"

namespace oz::services {

std::vector<SimVerb> Mishaps::verbs()
{
    std::vector<SimVerb> verbs;
    const auto add = [&](const QString &name, const QStringList &arguments, const QString &help,
                         Mishap::Kind kind, int least = 0, int most = 0) {
        if (!m_kinds.isEmpty() && !m_kinds.contains(kind))
            return;
        verbs.push_back({name, arguments, help, [this, kind, least, most](const QStringList &words) {
                             const int number =
                                 words.isEmpty() ? 0 : SimArgument::integer(words[0], least, most);
                             m_next = Mishap{kind, number};
                         }});
    };
    add(QStringLiteral("fail-with"), {m_errors.name},
        QStringLiteral("answers the next request with an error"), Mishap::FailWith, m_errors.least,
        m_errors.most);
    add(QStringLiteral("answer-late"), {QStringLiteral("MILLISECONDS")},
        QStringLiteral("lets the next request wait"), Mishap::AnswerLate, 1, 3'600'000);
    add(QStringLiteral("never-answer"), {}, QStringLiteral("leaves the next request unanswered"),
        Mishap::NeverAnswer);
    add(QStringLiteral("die-on-request"), {},
        QStringLiteral("ends the connection at the next request, as a service that dies"),
        Mishap::DieOnRequest);
    add(QStringLiteral("answer-rubbish"), {},
        QStringLiteral("answers the next request with what means nothing"), Mishap::AnswerRubbish);
    if (m_requests.isEmpty())
        return verbs;
    QStringList words;
    for (const auto &request : m_requests)
        words.append(request.first);
    verbs.push_back({QStringLiteral("fail-next"), {words.join(u'|'), m_errors.name},
        QStringLiteral("answers the next request of this kind with an error"),
        [this, words](const QStringList &given) {
            const QString &message = m_requests[SimArgument::oneOf(given[0], words)].second;
            m_failing.insert(message, SimArgument::integer(given[1], m_errors.least, m_errors.most));
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
