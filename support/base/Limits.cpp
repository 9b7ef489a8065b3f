#include <oz/Limits.hpp>

#include <QByteArray>

#include <algorithm>
#include <atomic>

namespace oz {

namespace {

constexpr double LongestTime = 86'400; // seconds

std::chrono::milliseconds secondsIn(const char *variable, std::chrono::milliseconds fallback)
{
    bool ok = false;
    const double seconds = qgetenv(variable).toDouble(&ok);
    if (!ok || !(seconds > 0))
        return fallback;
    const auto count = qint64(std::min(seconds, LongestTime) * 1000);
    return std::chrono::milliseconds(std::max<qint64>(count, 1));
}

std::atomic<std::chrono::milliseconds> &currentWaitLimit()
{
    static std::atomic limit(secondsIn("OZ_WAIT_LIMIT", std::chrono::seconds(60)));
    return limit;
}

} // namespace

std::chrono::milliseconds waitLimit()
{
    return currentWaitLimit();
}

void setWaitLimit(std::chrono::milliseconds limit)
{
    currentWaitLimit() = std::max(limit, std::chrono::milliseconds(1));
}

std::chrono::milliseconds graceTime()
{
    return secondsIn("OZ_GRACE_TIME", std::chrono::seconds(5));
}

} // namespace oz
