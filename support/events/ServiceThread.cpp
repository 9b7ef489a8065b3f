#include "events/ServiceThread.hpp"

#include "base/UniqueFd.hpp"

#include <QDeadlineTimer>
#include <QEventLoop>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

namespace oz {

namespace {
constexpr std::chrono::seconds LongestEnd(1);
} // namespace

ServiceThread *ServiceThread::instance()
{
    // Never destroyed: whatever ends after it may still post.
    static auto *const s_thread = new ServiceThread;
    const std::lock_guard starting(s_thread->m_starting);
    if (const int error = s_thread->tryStart()) {
        errno = error;
        return nullptr;
    }
    return s_thread;
}

ServiceThread::ServiceThread()
{
    setObjectName(QStringLiteral("oz-services"));
}

int ServiceThread::tryStart()
{
    if (m_started)
        return 0;
    {
        // An event loop that gets no descriptor ends the whole program.
        const UniqueFd spare[] = {UniqueFd(::eventfd(0, EFD_CLOEXEC)), UniqueFd(::eventfd(0, EFD_CLOEXEC))};
        if (!spare[1])
            return errno;
    }
    std::unique_lock lock(m_mutex);
    // The program's signals are for its own threads.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    start();
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    m_started = isRunning();
    if (!m_started)
        return EAGAIN;
    m_process = ::getpid();
    m_running.wait(lock, [this] { return m_context != nullptr; });
    std::atexit([] { instance()->stop(); });
    return 0;
}

void ServiceThread::stop()
{
    // A forked child does not have this thread, but runs the handlers of its end all the same. A program may
    // also end on this very thread.
    const pid_t thread = m_thread;
    if (m_process != ::getpid() || thread == ::gettid())
        return;
    quit();
    wait();
    // Qt stops waiting a moment before the thread has destroyed its own data.
    const QDeadlineTimer deadline(LongestEnd);
    while (::tgkill(m_process, thread, 0) == 0 && !deadline.hasExpired())
        std::this_thread::sleep_for(std::chrono::microseconds(50));
}

void ServiceThread::run()
{
    QObject context;
    // Made while the starting thread waits: the application may end right after, and Qt makes no loop without
    // one.
    QEventLoop loop;
    {
        const std::lock_guard lock(m_mutex);
        m_context = &context;
        m_thread = ::gettid();
        m_running.notify_all();
    }
    loop.exec();
    const std::lock_guard lock(m_mutex);
    m_context = nullptr;
}

} // namespace oz
