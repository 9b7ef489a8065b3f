#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <limits>
#include <map>
#include <optional>

namespace oz::services {

class PhoneTimer;

/*! The time in which the simulated phone lives: as fast as the real one, faster, or moved on by hand. */
class PhoneClock : public QObject
{
    Q_OBJECT

public:
    using Time = std::chrono::milliseconds;

    PhoneClock();

    /*! The time since the phone was made. */
    [[nodiscard]] Time now() const;
    /*! A speed: from the end of one timer straight to that of the next. */
    static constexpr double WithoutWaiting = std::numeric_limits<double>::infinity();

    /*! How many times as fast as real time it goes: 0 stands still. */
    void setSpeed(double speed);
    [[nodiscard]] double speed() const { return m_speed; }
    /*! Lets \a time pass at once; whatever ends meanwhile ends in its order. */
    void advance(Time time);

Q_SIGNALS:
    /*! A timer has ended, and what it does is done; the next one that is due has not. */
    void turned();
    void speedChanged();

private:
    friend class PhoneTimer;
    using Due = std::multimap<Time, PhoneTimer *>;

    [[nodiscard]] static Time realTime();
    Due::iterator add(Time when, PhoneTimer *timer);
    void remove(Due::iterator place);
    [[nodiscard]] Time passed() const;
    void runUntil(Time end);
    void plan();

    double m_speed = 1;
    Time m_before{0}; // when the real time was m_since
    Time m_since;
    Due m_due;
    std::optional<Time> m_ending; // when the timer ends that does so now
    QTimer m_wake;
};

/*! A timer of the phone's time. */
class PhoneTimer : public QObject
{
    Q_OBJECT

public:
    enum Kind { Once, Repeatedly };

    explicit PhoneTimer(PhoneClock &clock, Kind kind = Once) : m_clock(clock), m_kind(kind) { }
    ~PhoneTimer() override { stop(); }

    /*! Starts anew; with no time at all it ends with the next turn of the event loop. */
    void start(std::chrono::milliseconds interval);
    void stop();
    [[nodiscard]] bool isActive() const { return m_isActive; }

Q_SIGNALS:
    void timeout();

private:
    friend class PhoneClock;
    void end(PhoneClock::Time when);

    PhoneClock &m_clock;
    Kind m_kind;
    bool m_isActive = false;
    std::chrono::milliseconds m_interval{};
    PhoneClock::Due::iterator m_place;
};

} // namespace oz::services
