#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <initializer_list>

namespace oz::arguments {

/*!
 * During the instance's life, delivers signals of the process through the event loop. Signals that would end
 * the program thus let destructors run. Make it before the program has further threads, which would take the
 * signals. They stay blocked after its end.
 */
class SignalWatch
{
public:
    SignalWatch(std::initializer_list<int> signals, const std::function<void(int signal)> &handler);
    ~SignalWatch();
    SignalWatch(const SignalWatch &) = delete;
    SignalWatch &operator=(const SignalWatch &) = delete;

    /*! Restores the default handling, such as in a child process. Safe between fork and exec. */
    void unblock() const;

private:
    sigset_t m_set;
    QSocketNotifier m_notifier;
};

} // namespace oz::arguments
