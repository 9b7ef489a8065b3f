#include "KeepAliveTimer.hpp"

namespace oz::cast {

KeepAliveTimer::KeepAliveTimer(std::chrono::milliseconds interval, std::chrono::milliseconds answerLimit)
{
    m_interval.setInterval(interval);
    m_interval.callOnTimeout(this, &KeepAliveTimer::onInterval);
    m_answerLimit.setSingleShot(true);
    m_answerLimit.setInterval(answerLimit);
    m_answerLimit.callOnTimeout(this, &KeepAliveTimer::unanswered);
}

void KeepAliveTimer::stop()
{
    m_interval.stop();
    m_answerLimit.stop();
}

void KeepAliveTimer::onInterval()
{
    if (m_answerLimit.isActive())
        return;
    m_answerLimit.start();
    Q_EMIT due();
}

} // namespace oz::cast
