#include "core/StatePublisher.hpp"

#include "core/Error.hpp"
#include "core/Log.hpp"

namespace oz::services {

StatePublisher::StatePublisher(const QString &path, mode_t mode) : m_publisher(path, mode) { }

void StatePublisher::publish(const QVariantMap &attributes)
{
    if (m_publisher.replace(attributes)) {
        m_published = true;
        return;
    }
    const QString problem = QLatin1String("cannot publish ") + m_publisher.path() + QLatin1String(": ")
        + m_publisher.errorString();
    if (!m_published)
        throw Error(problem);
    qCWarning(logServices).noquote() << problem;
}

} // namespace oz::services
