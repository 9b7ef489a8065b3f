#pragma once

#include <oz/GrowingPause.hpp>

#include <QTimer>

namespace oz::services {

/*! Makes attempts with growing pauses. */
class RetryTimer : public QTimer
{
public:
    RetryTimer(std::chrono::milliseconds first, std::chrono::milliseconds longest) : m_pause(first, longest)
    {
        setSingleShot(true);
    }

    /*! Has the next attempt made, later than the last one. */
    void startLater() { start(m_pause.next()); }
    /*! An attempt has succeeded: the next pause is the first again. */
    void reset() { m_pause.reset(); }

private:
    GrowingPause<> m_pause;
};

} // namespace oz::services
