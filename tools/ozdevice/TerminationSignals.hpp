#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <sys/signalfd.h>
#include <unistd.h>

namespace oz::tools {

/*!
 * For the life of the instance, signals that would end the program come through the event loop, so that
 * everything is cleaned up on the way out.
 */
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
    /*! A child starts with the signals as usual. */
    void unblock() const { sigprocmask(SIG_UNBLOCK, &m_set, nullptr); }

private:
    sigset_t m_set{};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace oz::tools
