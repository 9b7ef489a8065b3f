#include <oz/models/DeviceRequest.hpp>

namespace oz::models {

namespace {

RequestResult cancelled()
{
    return {false, 0, QStringLiteral("Cancelled")};
}

} // namespace

DeviceRequest::DeviceRequest(const QFuture<RequestResult> &future, QObject *parent) : QObject(parent)
{
    connect(&m_watcher, &QFutureWatcherBase::finished, this,
        [this] { finish(m_watcher.future().resultCount() > 0 ? m_watcher.result() : cancelled()); });
    m_watcher.setFuture(future);
}

DeviceRequest::~DeviceRequest() = default;

void DeviceRequest::cancel()
{
    m_watcher.cancel();
    finish(cancelled());
}

void DeviceRequest::finish(const RequestResult &result)
{
    if (!m_running)
        return;
    m_running = false;
    m_result = result;
    Q_EMIT finished();
}

} // namespace oz::models
