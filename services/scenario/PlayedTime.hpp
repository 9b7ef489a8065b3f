#pragma once

#include "phone/PhoneClock.hpp"

#include <optional>

namespace oz::services {

/*! The phone's time while a scenario plays, which can be given a speed and can stand still. At the end the
 * clock has the speed of before again. */
class PlayedTime
{
public:
    /*! \a speed counts from begin() on; without one the clock keeps its own. */
    PlayedTime(PhoneClock &clock, std::optional<double> speed) : m_clock(clock), m_wanted(speed) { }

    void begin();
    /*! The clock may be gone after that. */
    void end();

    [[nodiscard]] PhoneClock &clock() const { return m_clock; }
    [[nodiscard]] PhoneClock::Time now() const { return m_clock.now(); }
    [[nodiscard]] PhoneClock::Time began() const { return m_began; }

    /*! Of the time that goes on later, while it stands still. */
    [[nodiscard]] double speed() const { return m_holds > 0 ? m_heldSpeed : m_clock.speed(); }
    void setSpeed(double speed);

    /*! Stands still until each freeze() has its unfreeze(). */
    void freeze();
    void unfreeze();

private:
    enum class Phase { Before, Playing, Over };

    PhoneClock &m_clock;
    std::optional<double> m_wanted;
    Phase m_phase = Phase::Before;
    PhoneClock::Time m_began{0};
    double m_speedBefore = 1;
    int m_holds = 0;
    double m_heldSpeed = 1;
};

} // namespace oz::services
