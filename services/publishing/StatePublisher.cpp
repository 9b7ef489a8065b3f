#include "publishing/StatePublisher.hpp"

namespace oz::services {

StatePublisher::StatePublisher(Tree &tree, const QString &path, mode_t mode)
    : TreeObject(tree, path), m_publisher(path, mode)
{
}

void StatePublisher::stand()
{
    m_attributes.reset();
    attempt();
}

void StatePublisher::publish(const QVariantMap &attributes)
{
    m_attributes = attributes;
    attempt();
    tree().tell(path(), attributes);
}

TreeObject::Failure StatePublisher::put()
{
    const bool done = m_attributes ? m_publisher.replace(*m_attributes) : m_publisher.publish({});
    return done ? Failure() : Failure{m_publisher.error(), m_publisher.errorString()};
}

} // namespace oz::services
