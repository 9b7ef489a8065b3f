#include "base/UserWarnings.hpp"

#include "base/Log.hpp"

#include <chrono>

namespace oz {

namespace {
using namespace std::chrono_literals;
constexpr auto Interval = 1min;
} // namespace

UserWarnings &UserWarnings::ofThisThread()
{
    static thread_local UserWarnings s_warnings;
    return s_warnings;
}

UserWarnings::UserWarnings()
{
    m_next.setSingleShot(true);
    connect(&m_next, &QTimer::timeout, this, &UserWarnings::sumUp);
}

void UserWarnings::warn(uid_t user, const QString &text)
{
    const auto [given, isNew] = m_given.try_emplace({user, text});
    if (!isNew) {
        ++given->second.leftOut;
        return;
    }
    given->second.end.setRemainingTime(Interval);
    qCWarning(logSupport).noquote() << "user" << user << text;
    if (!m_next.isActive())
        m_next.start(Interval);
}

void UserWarnings::sumUp()
{
    auto left = QDeadlineTimer(QDeadlineTimer::Forever);
    for (auto each = m_given.begin(); each != m_given.end();) {
        auto &[key, given] = *each;
        if (!given.end.hasExpired()) {
            left = std::min(left, given.end);
            ++each;
            continue;
        }
        if (given.leftOut > 0) {
            qCWarning(logSupport).noquote() << "user" << key.first << key.second << "(said once, was so"
                                            << given.leftOut << "times more in the last minute)";
        }
        each = m_given.erase(each);
    }
    if (!m_given.empty())
        m_next.start(std::chrono::ceil<std::chrono::milliseconds>(left.remainingTimeAsDuration()));
}

} // namespace oz
