#include "RequestThread.hpp"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QMutex>
#include <QWaitCondition>

#include <chrono>
#include <memory>

namespace oz::models {

namespace {

using namespace std::chrono_literals;

// An application that ends gives the threads the time to take their leave, but none that waits for a silent
// service.
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
        static auto *threads = new RunningThreads; // one may end after everything else
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

RunningRequest::RunningRequest(QPromise<RequestResult> &&promise) : m_promise(std::move(promise))
{
    connect(&m_watcher, &QFutureWatcherBase::canceled, this, [this] {
        if (m_undo)
            m_undo();
        finish({});
    });
    m_watcher.setFuture(m_promise.future());
    m_promise.setProgressRange(0, 1);
    m_promise.setProgressValue(1);
}

RunningRequest::~RunningRequest() = default;

void RunningRequest::finish(const RequestResult &result)
{
    m_watcher.disconnect(this);
    m_undo = nullptr;
    m_promise.addResult(result); // is dropped where the future is cancelled
    m_promise.finish();
    deleteLater();
}

void RunningRequest::whenCancelled(const std::function<void()> &undo)
{
    m_undo = undo;
}

RequestThread::RequestThread() : m_context(new QObject), m_thread(new QThread)
{
    RunningThreads::instance().begin();
    m_context->moveToThread(m_thread);
    QObject::connect(m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    QObject::connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
    QObject::connect(m_context, &QObject::destroyed, [] { RunningThreads::instance().end(); });
    m_thread->start();
}

RequestThread::~RequestThread()
{
    m_thread->quit();
}

QFuture<RequestResult> RequestThread::request(const std::function<void(RunningRequest *)> &begin)
{
    auto promise = std::make_shared<QPromise<RequestResult>>();
    promise->start();
    const QFuture<RequestResult> future = promise->future(); // the thread takes the promise
    QMetaObject::invokeMethod(
        m_context,
        [context = m_context, begin, promise] {
            auto *request = new RunningRequest(std::move(*promise));
            request->setParent(context);
            if (request->isCancelled())
                request->finish({});
            else
                begin(request);
        },
        Qt::QueuedConnection);
    return future;
}

} // namespace oz::models
