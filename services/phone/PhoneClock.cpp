#include "phone/PhoneClock.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace oz::services {

PhoneClock::PhoneClock() : m_since(realTime())
{
    m_wake.setSingleShot(true);
    m_wake.setTimerType(Qt::PreciseTimer);
    connect(&m_wake, &QTimer::timeout, this, [this] {
        if (m_speed == WithoutWaiting && !m_due.empty())
            m_before = std::max(m_before, m_due.begin()->first);
        runUntil(passed());
    });
}

PhoneClock::Time PhoneClock::realTime()
{
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now().time_since_epoch());
}

// A timer's actions happen at the time when it ends, however late the event loop, or whoever advanced the
// clock, has come to it.
PhoneClock::Time PhoneClock::now() const
{
    return m_ending.value_or(passed());
}

PhoneClock::Time PhoneClock::passed() const
{
    return m_speed == WithoutWaiting
        ? m_before
        : m_before + Time(std::llround(double((realTime() - m_since).count()) * m_speed));
}

void PhoneClock::setSpeed(double speed)
{
    m_before = passed();
    m_since = realTime();
    const double former = std::exchange(m_speed, speed);
    plan();
    if (former != speed)
        Q_EMIT speedChanged();
}

void PhoneClock::advance(Time time)
{
    const Time end = passed() + time;
    m_before = end;
    m_since = realTime();
    runUntil(end);
}

PhoneClock::Due::iterator PhoneClock::add(Time when, PhoneTimer *timer)
{
    const auto place = m_due.emplace(when, timer);
    if (place == m_due.begin())
        plan();
    return place;
}

void PhoneClock::remove(Due::iterator place)
{
    m_due.erase(place);
    if (m_due.empty())
        m_wake.stop();
}

void PhoneClock::runUntil(Time end)
{
    while (!m_due.empty() && m_due.begin()->first <= end) {
        const auto [when, timer] = *m_due.begin();
        const auto outer = std::exchange(m_ending, when);
        timer->end(when); // which takes it out, and perhaps others
        Q_EMIT turned();
        m_ending = outer;
    }
    plan();
}

void PhoneClock::plan()
{
    if (m_due.empty() || m_speed <= 0)
        return m_wake.stop();
    const double left = double(std::max(m_due.begin()->first - passed(), Time(0)).count()) / m_speed;
    m_wake.start(int(std::min(std::ceil(left), 1e9)));
}

void PhoneTimer::start(std::chrono::milliseconds interval)
{
    stop();
    m_interval = interval;
    m_isActive = true;
    m_place = m_clock.add(m_clock.now() + interval, this);
}

void PhoneTimer::stop()
{
    if (std::exchange(m_isActive, false))
        m_clock.remove(m_place);
}

void PhoneTimer::end(PhoneClock::Time when)
{
    stop();
    if (m_kind == Repeatedly) {
        m_isActive = true;
        m_place = m_clock.add(when + std::max(m_interval, std::chrono::milliseconds(1)), this);
    }
    Q_EMIT timeout();
}

} // namespace oz::services
