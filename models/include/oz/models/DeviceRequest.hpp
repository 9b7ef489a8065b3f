#pragma once

#include <oz/models/OzModelsGlobal.hpp>
#include <oz/models/RequestResult.hpp>

#include <QFutureWatcher>
#include <QObject>

namespace oz::models {

/*!
 * A request under way, for scripts and for connections of signals and slots.
 *
 * Use an instance on the thread that created it. Destroying it does not cancel the request.
 */
class OZ_MODELS_EXPORT DeviceRequest : public QObject
{
    Q_OBJECT
    /*! Whether the request is under way. Once this is false, nothing changes any more. */
    Q_PROPERTY(bool running READ isRunning NOTIFY finished FINAL)
    /*! Whether the request succeeded; false while it runs, and if it was cancelled. */
    Q_PROPERTY(bool succeeded READ hasSucceeded NOTIFY finished FINAL)
    /*! RequestResult::code; 0 while it runs, and if it was cancelled. */
    Q_PROPERTY(int code READ code NOTIFY finished FINAL)
    /*! RequestResult::reason; empty while it runs, "Cancelled" if it was cancelled. */
    Q_PROPERTY(QString reason READ reason NOTIFY finished FINAL)
    /*! RequestResult::value; empty while it runs, and if the request has none. */
    Q_PROPERTY(QString value READ value NOTIFY finished FINAL)
    /*! RequestResult::errorNumber; 0 while it runs, and without an error. */
    Q_PROPERTY(int errorNumber READ errorNumber NOTIFY finished FINAL)
    /*! RequestResult::errorString; empty while it runs, and without an error. */
    Q_PROPERTY(QString errorString READ errorString NOTIFY finished FINAL)

public:
    /*! Follows \a future. */
    explicit DeviceRequest(const QFuture<RequestResult> &future, QObject *parent = nullptr);
    ~DeviceRequest() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] bool isRunning() const { return m_running; }
    [[nodiscard]] bool hasSucceeded() const { return m_result.succeeded; }
    [[nodiscard]] int code() const { return m_result.code; }
    [[nodiscard]] QString reason() const { return m_result.reason; }
    [[nodiscard]] QString value() const { return m_result.value; }
    [[nodiscard]] int errorNumber() const { return m_result.errorNumber; }
    [[nodiscard]] QString errorString() const { return m_result.errorString; }
    //!@}
    /*! The future that it follows. */
    [[nodiscard]] QFuture<RequestResult> future() const { return m_watcher.future(); }

public Q_SLOTS:
    /*! Ends the request at once, whatever its service does. */
    void cancel();

Q_SIGNALS:
    /*! The request has ended. Emitted once, by the event loop or within cancel(). */
    void finished();

private:
    void finish(const RequestResult &result);

    QFutureWatcher<RequestResult> m_watcher;
    RequestResult m_result;
    bool m_running = true;
};

} // namespace oz::models
