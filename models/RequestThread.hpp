#pragma once

#include <oz/models/RequestResult.hpp>

#include <QFutureWatcher>
#include <QPromise>
#include <QThread>

#include <functional>

namespace oz::models {

/*! A request under way on its thread. */
class RunningRequest : public QObject
{
    Q_OBJECT

public:
    explicit RunningRequest(QPromise<RequestResult> &&promise);
    ~RunningRequest() override;

    [[nodiscard]] bool isCancelled() const { return m_promise.isCanceled(); }
    /*! Ends it with this result, and the object with it. */
    void finish(const RequestResult &result);
    /*! What is to be done when it is cancelled before it has finished. */
    void whenCancelled(const std::function<void()> &undo);

private:
    QPromise<RequestResult> m_promise;
    QFutureWatcher<RequestResult> m_watcher;
    std::function<void()> m_undo;
};

/*! A thread for the requests of one subject. It outlives its owner until a wait that is under way has ended.
 */
class RequestThread
{
public:
    RequestThread();
    ~RequestThread();
    Q_DISABLE_COPY_MOVE(RequestThread)

    /*! Has \a begin called on the thread. The request's parent is an object that lives there until the thread
     * ends. */
    QFuture<RequestResult> request(const std::function<void(RunningRequest *)> &begin);

private:
    QObject *m_context;
    QThread *m_thread;
};

} // namespace oz::models
