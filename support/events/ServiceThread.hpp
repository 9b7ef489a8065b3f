#pragma once

#include <QMetaObject>
#include <QObject>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <sys/types.h>
#include <utility>

namespace oz {

/*!
 * The platform's own thread, with an event loop: started by the first who needs it, then there until the
 * program ends. It never wakes without something to do.
 */
class ServiceThread final : private QThread
{
public:
    /*! Started; nullptr, with the reason in errno, where that fails, in which case the next call tries again.
     */
    [[nodiscard]] static ServiceThread *instance();

    /*! Runs \a call on this thread, after what was posted before, with an object that lives there. Nothing
     * once the program ends. */
    template <typename Call>
    void post(Call &&call)
    {
        const std::lock_guard lock(m_mutex);
        if (QObject *context = m_context) {
            QMetaObject::invokeMethod(
                context, [context, call = std::forward<Call>(call)] { call(context); }, Qt::QueuedConnection);
        }
    }

private:
    ServiceThread();
    int tryStart();
    void run() override;
    void stop();

    std::mutex m_starting;
    bool m_started = false;
    std::mutex m_mutex;
    std::condition_variable m_running;
    QObject *m_context = nullptr; // while the thread runs
    pid_t m_process = 0; // the process that started it
    std::atomic<pid_t> m_thread = 0; // as the kernel calls it
};

} // namespace oz
