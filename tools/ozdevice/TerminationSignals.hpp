#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <sys/signalfd.h>
#include <unistd.h>

namespace oz::tools {

/*! During the instance's life, delivers the signals that would end the program through the event loop, so
 * that destructors run. */
class TerminationSignals
{
public:
    explicit TerminationSignals(const std::function<void(int signal)> &handler)
    {
        sigemptyset(&m_set);
        for (const int number : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&m_set, number);
        sigprocmask(SIG_BLOCK, &m_set, nullptr);
        const int descriptor = ::signalfd(-1, &m_set, SFD_CLOEXEC | SFD_NONBLOCK);
        m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [descriptor, handler] {
            signalfd_siginfo info;
            while (::read(descriptor, &info, sizeof info) == sizeof info)
                handler(int(info.ssi_signo));
        });
    }
    /*! Restores the default handling in a child process. */
    void unblock() const { sigprocmask(SIG_UNBLOCK, &m_set, nullptr); }

private:
    sigset_t m_set{};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace oz::tools
