#pragma once

#include <algorithm>
#include <chrono>

namespace oz {

/*! The pauses between attempts: each is twice as long as the one before, up to a longest. Not thread-safe. */
template <typename Duration = std::chrono::milliseconds>
class GrowingPause
{
public:
    /*! Pauses from \a first to \a longest. */
    constexpr GrowingPause(Duration first, Duration longest)
        : m_first(first), m_longest(longest), m_next(first)
    {
    }

    /*! The pause before the next attempt, after which they grow. */
    [[nodiscard]] constexpr Duration next()
    {
        const Duration pause = m_next;
        m_next = std::min(m_next * 2, m_longest);
        return pause;
    }
    /*! Begins with the first pause again, as after a success. */
    constexpr void reset() { m_next = m_first; }
    /*! The first pause. */
    [[nodiscard]] constexpr Duration first() const { return m_first; }
    /*! True once the pauses have stopped growing. */
    [[nodiscard]] constexpr bool isLongest() const { return m_next >= m_longest; }

private:
    Duration m_first;
    Duration m_longest;
    Duration m_next;
};

} // namespace oz
