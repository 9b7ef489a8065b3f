#include "core/Mishaps.hpp"

namespace oz::services {

std::vector<SimVerb> Mishaps::verbs()
{
    const auto verb = [this](const QString &name, const QStringList &arguments, const QString &help,
                          Mishap::Kind kind, int most) {
        return SimVerb{name, arguments, help, [this, kind, most](const QStringList &words) {
                           const int number = words.isEmpty() ? 0 : SimArgument::integer(words[0], 1, most);
                           m_next = Mishap{kind, number};
                       }};
    };
    return {
        verb(QStringLiteral("fail-with"), {QStringLiteral("ERRNO")},
            QStringLiteral("answers the next request with an error"), Mishap::FailWith, 4095),
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
}

} // namespace oz::services
