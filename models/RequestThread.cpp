#include "RequestThread.hpp"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QMutex>
#include <QWaitCondition>

#include <chrono>
#include <utility>

namespace oz::models {

namespace {

using namespace std::chrono_literals;

// At the application's end, gives the threads a second to end; a thread that waits for a silent service is
// left behind.
class RunningThreads
{
public:
    void begin()
    {
        const QMutexLocker locker(&m_mutex);
        ++m_count;
        if (!m_routine)
            qAddPostRoutine([] { instance().wait(); });
        m_routine = true;
    }
    void end()
    {
        const QMutexLocker locker(&m_mutex);
        --m_count;
        m_ended.wakeAll();
    }
    static RunningThreads &instance()
    {
        static auto *threads =
            new RunningThreads; // never destroyed, because a thread may end after static objects
        return *threads;
    }

private:
    void wait()
    {
        const QDeadlineTimer deadline(1s);
        QMutexLocker locker(&m_mutex);
        while (m_count > 0 && m_ended.wait(&m_mutex, deadline)) { }
        m_routine = false;
    }

    QMutex m_mutex;
    QWaitCondition m_ended;
    int m_count = 0;
    bool m_routine = false;
};

} // namespace

RequestPromise::RequestPromise()
{
    m_promise.start();
}

void RequestPromise::begin()
{
    m_promise.setProgressRange(0, 1);
    m_promise.setProgressValue(1);
}

void RequestPromise::finish(const RequestResult &result)
{
    if (m_ended.test_and_set())
        return;
    m_promise.addResult(result); // ignored if the future is cancelled
    m_promise.finish();
}

RunningRequest::RunningRequest(std::shared_ptr<RequestPromise> promise) : m_promise(std::move(promise))
{
    // A future can be cancelled even after it has finished. Only the order of these two signals tells whether
    // the cancellation came first.
    connect(&m_watcher, &QFutureWatcherBase::canceled, this, &RunningRequest::undoCancelled);
    connect(&m_watcher, &QFutureWatcherBase::finished, this, [this] {
        m_watcher.disconnect(this);
        deleteLater();
    });
    m_watcher.setFuture(m_promise->future());
    m_promise->begin();
}

RunningRequest::~RunningRequest() = default;

bool RunningRequest::finish(const RequestResult &result)
{
    if (std::exchange(m_ended, true))
        return false;
    if (!result.succeeded)
        m_undo = nullptr;
    m_promise->finish(result);
    return true;
}

void RunningRequest::whenCancelled(const std::function<void()> &undo)
{
    m_undo = undo;
    if (m_promise->isCancelled())
        undoCancelled();
}

void RunningRequest::undoCancelled()
{
    m_ended = true;
    m_promise->finish({});
    if (const auto undo = std::exchange(m_undo, nullptr))
        undo();
}

WorkThread::WorkThread() : m_context(new QObject), m_thread(new QThread)
{
    RunningThreads::instance().begin();
    m_context->moveToThread(m_thread);
    QObject::connect(m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    QObject::connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
    QObject::connect(m_context, &QObject::destroyed, [] { RunningThreads::instance().end(); });
    m_thread->start();
}

WorkThread::~WorkThread()
{
    if (m_thread)
        m_thread->quit();
}

void WorkThread::quitLater()
{
    QMetaObject::invokeMethod(
        m_context, [thread = std::exchange(m_thread, nullptr)] { thread->quit(); }, Qt::QueuedConnection);
}

void RequestThread::run(
    const std::shared_ptr<RequestPromise> &promise, const std::function<void(RunningRequest *)> &begin) const
{
    QMetaObject::invokeMethod(
        m_thread.context(),
        [context = m_thread.context(), promise, begin] {
            if (promise->isCancelled())
                return promise->finish({});
            auto *request = new RunningRequest(promise);
            request->setParent(context);
            begin(request);
        },
        Qt::QueuedConnection);
}

CancellationThread::~CancellationThread()
{
    m_thread.quitLater();
}

void CancellationThread::watch(const std::shared_ptr<RequestPromise> &promise) const
{
    // This thread must not keep the promise alive: destroying it cancels the future of a dropped request.
    QMetaObject::invokeMethod(
        m_thread.context(),
        [context = m_thread.context(), weak = std::weak_ptr(promise), future = promise->future()] {
            const auto end = [weak] {
                if (const auto cancelled = weak.lock())
                    cancelled->finish({});
            };
            if (future.isCanceled())
                return end();
            auto *watcher = new QFutureWatcher<RequestResult>(context);
            QObject::connect(watcher, &QFutureWatcherBase::canceled, context, end);
            QObject::connect(
                watcher, &QFutureWatcherBase::finished, watcher, &QFutureWatcherBase::deleteLater);
            watcher->setFuture(future);
        },
        Qt::QueuedConnection);
}

} // namespace oz::models
