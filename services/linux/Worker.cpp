#include "linux/Worker.hpp"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <thread>

namespace oz::services {

namespace Workers {

class WayBack::End : public QObject
{
public:
    End(QObject *context, std::shared_ptr<Shared> shared) : QObject(context), m_shared(std::move(shared))
    {
        m_shared->end = this;
    }
    ~End() override
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->end = nullptr;
    }

private:
    std::shared_ptr<Shared> m_shared;
};

WayBack::WayBack(QObject *context) : m_shared(std::make_shared<Shared>())
{
    new End(context, m_shared); // belongs to the context
}

void WayBack::call(const std::function<void()> &what)
{
    const std::lock_guard lock(m_shared->mutex);
    if (!m_shared->end)
        return;
    QMetaObject::invokeMethod(
        m_shared->end,
        [what, end = m_shared->end] {
            what();
            end->deleteLater();
        },
        Qt::QueuedConnection);
}

namespace {

struct Count
{
    std::mutex mutex;
    std::condition_variable changed;
    int running = 0;
};

// Never destroyed, as threads may end after the program's static objects.
Count &count()
{
    static auto *const s_count = new Count;
    return *s_count;
}

} // namespace

bool waitForAll(std::chrono::milliseconds limit)
{
    std::unique_lock lock(count().mutex);
    return count().changed.wait_for(lock, limit, [] { return count().running == 0; });
}

void run(std::function<void()> work)
{
    {
        const std::lock_guard lock(count().mutex);
        ++count().running;
    }
    const auto counted = [work = std::move(work)]() mutable {
        work();
        work = nullptr; // with what it holds
        const std::lock_guard lock(count().mutex);
        --count().running;
        count().changed.notify_all();
    };
    // The signals of the process are for its event loop.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread(counted).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace Workers

struct SerialWorker::Queue
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> works;
    bool ends = false;
    bool isEnded = false;
};

SerialWorker::SerialWorker() : m_queue(std::make_shared<Queue>())
{
    Workers::run([queue = m_queue] {
        std::unique_lock lock(queue->mutex);
        for (;;) {
            queue->changed.wait(lock, [&] { return !queue->works.empty() || queue->ends; });
            if (queue->works.empty())
                break;
            const std::function<void()> work = std::move(queue->works.front());
            queue->works.pop_front();
            lock.unlock();
            work();
            lock.lock();
        }
        queue->isEnded = true;
        queue->changed.notify_all();
    });
}

SerialWorker::~SerialWorker()
{
    std::unique_lock lock(m_queue->mutex);
    m_queue->ends = true;
    m_queue->changed.notify_all();
    m_queue->changed.wait_for(lock, std::chrono::seconds(1), [this] { return m_queue->isEnded; });
}

void SerialWorker::enqueue(std::function<void()> work)
{
    const std::lock_guard lock(m_queue->mutex);
    m_queue->works.push_back(std::move(work));
    m_queue->changed.notify_all();
}

} // namespace oz::services
