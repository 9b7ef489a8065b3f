#pragma once

#include <oz/models/RequestResult.hpp>

#include <QFutureWatcher>
#include <QPromise>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>

namespace oz::models {

/*!
 * The promise of a request. Both the request's thread and the CancellationThread may finish it; only the
 * first call counts. Any thread may call it.
 */
class RequestPromise
{
public:
    RequestPromise();

    [[nodiscard]] QFuture<RequestResult> future() const { return m_promise.future(); }
    [[nodiscard]] bool isCancelled() const { return m_promise.isCanceled(); }
    /*! Sets the progress to 1: the service is being asked. */
    void begin();
    /*! Finishes the future, without a result if it was cancelled. */
    void finish(const RequestResult &result);

private:
    QPromise<RequestResult> m_promise;
    std::atomic_flag m_ended;
};

/*! A request under way on its thread. */
class RunningRequest : public QObject
{
    Q_OBJECT

public:
    explicit RunningRequest(std::shared_ptr<RequestPromise> promise);
    ~RunningRequest() override;

    /*! Finishes the request with this result and deletes the object later. Does nothing and returns false if
     * the request had ended before. */
    bool finish(const RequestResult &result);
    /*!
     * Sets what undoes the request if it is cancelled, even if it succeeds at that moment. Call this after
     * asking the service: \a undo runs at once if the request has been cancelled meanwhile.
     */
    void whenCancelled(const std::function<void()> &undo);

private:
    void undoCancelled();

    std::shared_ptr<RequestPromise> m_promise;
    QFutureWatcher<RequestResult> m_watcher;
    std::function<void()> m_undo;
    bool m_ended = false;
};

/*! A thread with an event loop. Destroying its owner does not wait for the call that the thread is in. */
class WorkThread
{
public:
    WorkThread();
    ~WorkThread();
    Q_DISABLE_COPY_MOVE(WorkThread)

    /*! An object that lives on the thread until that ends. */
    [[nodiscard]] QObject *context() const { return m_context; }
    /*! Ends the thread after it has delivered what was posted so far. */
    void quitLater();

private:
    QObject *m_context;
    QThread *m_thread;
};

/*! A thread for the requests of one subject. */
class RequestThread
{
public:
    /*! Calls \a begin on the thread, unless the request is cancelled before. The request's parent is an
     * object that lives there until the thread ends. */
    void run(const std::shared_ptr<RequestPromise> &promise,
        const std::function<void(RunningRequest *)> &begin) const;

private:
    WorkThread m_thread;
};

/*! Finishes cancelled futures at once, even while the threads of their requests wait for a service. */
class CancellationThread
{
public:
    CancellationThread() = default;
    ~CancellationThread();
    Q_DISABLE_COPY_MOVE(CancellationThread)

    void watch(const std::shared_ptr<RequestPromise> &promise) const;

private:
    WorkThread m_thread;
};

} // namespace oz::models
