#pragma once

#include "linux/Worker.hpp"

#include <functional>
#include <utility>

namespace oz::services {

/*!
 * Reads something in a worker's thread, one reading at a time. A reading that is asked for during another
 * begins after it, as the other may be older than the reason for asking; of several the last one counts.
 */
template <typename Result>
class LatestReading
{
public:
    using Read = std::function<Result()>;

    /*! \a done is called with each result on the thread of \a context, which owns this object. */
    LatestReading(QObject *context, std::function<void(const Result &result)> done)
        : m_context(context), m_done(std::move(done))
    {
    }

    void begin(Read read)
    {
        if (std::exchange(m_isUnderWay, true)) {
            m_next = std::move(read);
            return;
        }
        inWorker(m_context, std::move(read), [this](const Result &result) {
            m_isUnderWay = false;
            const Read next = std::exchange(m_next, nullptr);
            if (next)
                begin(next);
            m_done(result);
        });
    }
    [[nodiscard]] bool isUnderWay() const { return m_isUnderWay; }

private:
    QObject *m_context;
    std::function<void(const Result &result)> m_done;
    bool m_isUnderWay = false;
    Read m_next;
};

} // namespace oz::services
