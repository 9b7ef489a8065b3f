#include "publishing/Faults.hpp"

#include <cerrno>

namespace oz::services {

QMap<QString, QString> FaultErrors::usualTitles()
{
    const auto number = [](int error) { return QString::number(error); };
    return {{number(EPERM), QStringLiteral("not permitted")}, {number(ENOENT), QStringLiteral("not there")},
        {number(EIO), QStringLiteral("input or output failed")},
        {number(EACCES), QStringLiteral("access denied")}, {number(EBUSY), QStringLiteral("busy")},
        {number(ENODEV), QStringLiteral("no such device")}, {number(EINVAL), QStringLiteral("invalid")},
        {number(ENOTSUP), QStringLiteral("not supported")}, {number(ETIMEDOUT), QStringLiteral("timed out")}};
}

std::vector<FaultOrder> Faults::orders()
{
    std::vector<FaultOrder> orders;
    const auto add = [&](const QString &name, const QString &help, Fault::Kind kind,
                         const FaultErrors &number = {{}, 0, 0, {}}, const QString &unit = {}) {
        if (!m_kinds.isEmpty() && !m_kinds.contains(kind))
            return;
        orders.push_back({name, help, {}, number.name, number.least, number.most, unit, number.titles,
            [this, kind](const QString &, int value) {
                m_next = Fault{kind, value};
            }});
    };
    add(QStringLiteral("fail-with"), QStringLiteral("answers the next request with an error"),
        Fault::FailWith, m_errors);
    add(QStringLiteral("answer-late"), QStringLiteral("lets the next request wait"), Fault::AnswerLate,
        {QStringLiteral("MILLISECONDS"), 1, 3'600'000, {}}, QStringLiteral("ms"));
    add(QStringLiteral("never-answer"), QStringLiteral("leaves the next request unanswered"),
        Fault::NeverAnswer);
    add(QStringLiteral("die-on-request"),
        QStringLiteral("ends the connection at the next request, as a service that dies"),
        Fault::DieOnRequest);
    add(QStringLiteral("answer-rubbish"), QStringLiteral("answers the next request with what means nothing"),
        Fault::AnswerRubbish);
    if (m_words.isEmpty())
        return orders;
    QStringList words;
    for (const auto &request : std::as_const(m_words))
        words.append(request.first);
    orders.push_back({QStringLiteral("fail-next"),
        QStringLiteral("answers the next request of this kind with an error"), words, m_errors.name,
        m_errors.least, m_errors.most, {}, m_errors.titles, [this, words](const QString &word, int number) {
            m_failing.insert(m_words[words.indexOf(word)].second, number);
        }});
    return orders;
}

std::optional<Fault> Faults::take(const QString &message)
{
    if (m_next)
        return std::exchange(m_next, std::nullopt);
    const int error = m_failing.take(message);
    return error ? std::optional(Fault{Fault::FailWith, error}) : std::nullopt;
}

} // namespace oz::services
