#include "daemon/PhoneWatch.hpp"

#include "daemon/LongPoll.hpp"

namespace oz::services {

namespace {

constexpr std::chrono::milliseconds Together(50); // looking takes about two, and people see no more

} // namespace

PhoneWatch::PhoneWatch(std::function<QVariantMap()> look) : m_look(std::move(look))
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(Together);
    connect(&m_soon, &QTimer::timeout, this, &PhoneWatch::tell);
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] { answerWaiting(true); });
}

RequestKind PhoneWatch::request()
{
    return {QStringLiteral("phone"), {}, [this](const Request &request, const Answer &answer) {
                if (m_waiting.empty())
                    m_patience.start(LongestPoll);
                const QVariant from = request.data.toMap().value(QStringLiteral("from"));
                m_waiting.push_back({answer, from.isValid() ? from.toLongLong() : -1});
                // Nobody looks while nobody wants to know.
                tell();
            }};
}

void PhoneWatch::change()
{
    if (!m_waiting.empty() && !m_soon.isActive())
        m_soon.start();
}

void PhoneWatch::tell()
{
    m_soon.stop();
    if (m_waiting.empty())
        return;
    QVariantMap seen = m_look();
    if (seen != m_seen) {
        m_seen = std::move(seen);
        ++m_version;
    }
    answerWaiting(false);
}

void PhoneWatch::answerWaiting(bool all)
{
    QVariantMap told = m_seen;
    told.insert(QStringLiteral("version"), m_version);
    std::erase_if(m_waiting, [&](const Waiting &waiting) {
        if (!all && waiting.from == m_version)
            return false;
        waiting.answer({told, 0, {}});
        return true;
    });
}

} // namespace oz::services
