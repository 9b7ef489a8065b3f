#pragma once

#include <utility>

namespace oz {

/*!
 * Has a trouble told once until it is over:
 *
 *     if (m_trouble.isNew())
 *         qCWarning(log) << "...";
 *
 * Not thread-safe.
 */
class OnceUntilWell
{
public:
    /*! True the first time, and the first time after well(). */
    [[nodiscard]] bool isNew() { return !std::exchange(m_isTold, true); }
    /*! The trouble is over. */
    void well() { m_isTold = false; }

private:
    bool m_isTold = false;
};

} // namespace oz
