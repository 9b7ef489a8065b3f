#pragma once

#include <QTimer>

#include <algorithm>
#include <chrono>

namespace oz::services {

/*! The next of attempts that come with growing pauses: each is twice as long as the one before. */
class RetryTimer : public QTimer
{
public:
    RetryTimer(std::chrono::milliseconds first, std::chrono::milliseconds longest)
        : m_first(first), m_longest(longest), m_pause(first)
    {
        setSingleShot(true);
    }

    /*! Has the next attempt made, later than the last one. */
    void startLater()
    {
        start(m_pause);
        m_pause = std::min(m_pause * 2, m_longest);
    }
    /*! An attempt has succeeded: the next pause is the first again. */
    void reset() { m_pause = m_first; }

private:
    const std::chrono::milliseconds m_first;
    const std::chrono::milliseconds m_longest;
    std::chrono::milliseconds m_pause;
};

} // namespace oz::services
