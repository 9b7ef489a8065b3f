#include "events/ServiceThread.hpp"

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace oz {

ServiceThread *ServiceThread::instance()
{
    // Never destroyed: whatever ends after it may still post.
    static ServiceThread *const s_thread = new ServiceThread;
    if (!s_thread->m_started) {
        errno = EAGAIN;
        return nullptr;
    }
    return s_thread;
}

ServiceThread::ServiceThread()
{
    setObjectName(QStringLiteral("oz-services"));
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
        return;
    m_running.wait(lock, [this] { return m_context != nullptr; });
    std::atexit([] { instance()->stop(); });
}

void ServiceThread::stop()
{
    quit();
    // The program may end on this very thread.
    if (QThread::currentThread() != this)
        wait();
}

void ServiceThread::run()
{
    QObject context;
    {
        const std::lock_guard lock(m_mutex);
        m_context = &context;
        m_running.notify_all();
    }
    exec();
    const std::lock_guard lock(m_mutex);
    m_context = nullptr;
}

} // namespace oz
