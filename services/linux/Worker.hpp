#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

namespace oz::services {

namespace Workers {

// The way back from a worker's thread, which ends with the object that waits for it.
class WayBack
{
public:
    explicit WayBack(QObject *context);
    /*! Calls \a what on the thread of the context, where that lives. Any thread may call this, once. */
    void call(const std::function<void()> &what);

private:
    class End;
    struct Shared
    {
        std::mutex mutex;
        End *end = nullptr;
    };

    std::shared_ptr<Shared> m_shared;
};

void run(std::function<void()> work);
/*! False where some are not done within \a limit. The end of the program would take from them what they use.
 */
[[nodiscard]] bool waitForAll(std::chrono::milliseconds limit);

} // namespace Workers

/*! Does one work after the other, in a thread that nobody waits for longer than for its last one. */
class SerialWorker
{
public:
    SerialWorker();
    /*! Lets what is posted be done, and waits for that, but no longer than a second. */
    ~SerialWorker();
    SerialWorker(const SerialWorker &) = delete;
    SerialWorker &operator=(const SerialWorker &) = delete;

    /*! As inWorker(), behind what was posted before. */
    template <typename Work, typename Done>
    void post(QObject *context, Work work, Done done)
    {
        Workers::WayBack back(context);
        enqueue([back, work = std::move(work), done = std::move(done)]() mutable {
            back.call([result = work(), done] { done(result); });
        });
    }
    /*! As post() of what nobody is told of. */
    void enqueue(std::function<void()> work);

private:
    struct Queue;
    std::shared_ptr<Queue> m_queue;
};

/*!
 * Has \a work done in a thread of its own, because the kernel or another process may take its time over it,
 * and then \a done called with its result on the thread of \a context, as long as that lives. Nobody waits
 * for the work, not even the end of the program.
 */
template <typename Work, typename Done>
void inWorker(QObject *context, Work work, Done done)
{
    Workers::WayBack back(context);
    Workers::run([back, work = std::move(work), done = std::move(done)]() mutable {
        back.call([result = work(), done] { done(result); });
    });
}

} // namespace oz::services
