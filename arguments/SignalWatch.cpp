#include "SignalWatch.hpp"

#include <sys/signalfd.h>
#include <unistd.h>

namespace oz::arguments {

namespace {

sigset_t setOf(std::initializer_list<int> signals)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    return set;
}

// A descriptor that has input while one of the signals waits, which no thread made from now on takes.
int openBlocked(const sigset_t &set)
{
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

SignalWatch::SignalWatch(std::initializer_list<int> signals, const std::function<void(int signal)> &handler)
    : m_set(setOf(signals)), m_notifier(openBlocked(m_set), QSocketNotifier::Read)
{
    QObject::connect(
        &m_notifier, &QSocketNotifier::activated, [descriptor = int(m_notifier.socket()), handler] {
            signalfd_siginfo info;
            while (::read(descriptor, &info, sizeof info) == ssize_t(sizeof info))
                handler(int(info.ssi_signo));
        });
}

SignalWatch::~SignalWatch()
{
    m_notifier.setEnabled(false);
    ::close(int(m_notifier.socket()));
}

void SignalWatch::unblock() const
{
    sigprocmask(SIG_UNBLOCK, &m_set, nullptr);
}

} // namespace oz::arguments
