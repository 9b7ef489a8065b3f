#include "scenario/UnusedRequests.hpp"

#include "scenario/PublicValues.hpp"

namespace oz::services {

namespace {

constexpr qsizetype MostAsked = 10'000;
constexpr qsizetype MostShown = 10;

} // namespace

void UnusedRequests::add(const QString &path, const QVariantMap &message)
{
    if (m_asked.size() == MostAsked)
        m_asked.removeFirst();
    m_asked.append({path, message});
}

bool UnusedRequests::take(const ScenarioStep &step)
{
    for (qsizetype i = 0; i < m_asked.size(); ++i) {
        const QVariant fields = step.request->read(m_asked[i].path, m_asked[i].message);
        if (!fields.isValid() || !step.matches(fields.toMap()))
            continue;
        m_asked.removeAt(i);
        m_hasUsedOthers = true;
        return true;
    }
    return false;
}

QString UnusedRequests::text() const
{
    QStringList asked;
    for (auto it = m_asked.crbegin(); it != m_asked.crend() && asked.size() < MostShown; ++it) {
        if (const QString text = publicRequestText(it->path, it->message); !text.isEmpty())
            asked.prepend(text);
    }
    if (!asked.isEmpty())
        return QLatin1String("asked was ") + asked.join(QLatin1String(", "));
    return m_hasUsedOthers ? QStringLiteral("nothing else was asked") : QStringLiteral("nothing was asked");
}

} // namespace oz::services
