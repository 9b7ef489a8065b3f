#include "scenario/PlayedTime.hpp"

#include <utility>

namespace oz::services {

void PlayedTime::begin()
{
    m_speedBefore = m_clock.speed();
    if (m_wanted)
        m_clock.setSpeed(*m_wanted);
    m_began = m_clock.now();
    m_phase = Phase::Playing;
}

void PlayedTime::end()
{
    if (std::exchange(m_phase, Phase::Over) == Phase::Playing && (m_wanted || m_holds > 0))
        m_clock.setSpeed(m_wanted ? m_speedBefore : m_heldSpeed);
}

void PlayedTime::setSpeed(double speed)
{
    m_wanted = speed;
    if (m_phase == Phase::Before)
        return;
    if (m_holds > 0)
        m_heldSpeed = speed;
    else
        m_clock.setSpeed(speed);
}

void PlayedTime::freeze()
{
    if (m_holds++ == 0) {
        m_heldSpeed = m_clock.speed();
        m_clock.setSpeed(0);
    }
}

void PlayedTime::unfreeze()
{
    if (--m_holds == 0 && m_phase != Phase::Over)
        m_clock.setSpeed(m_heldSpeed);
}

} // namespace oz::services
