#include "core/StatePublisher.hpp"

#include "core/Error.hpp"

namespace oz::services {

StatePublisher::StatePublisher(const QString &path, mode_t mode) : m_publisher(path, mode) { }

void StatePublisher::publish(const QVariantMap &attributes)
{
    if (m_publisher.replace(attributes))
        return;
    Startup::fail(QLatin1String("cannot publish ") + m_publisher.path() + QLatin1String(": ")
        + m_publisher.errorString());
}

} // namespace oz::services
