#pragma once

#include "publishing/Tree.hpp"

#include <oz/PpsPublisher.hpp>

#include <QVariantMap>

#include <optional>
#include <sys/types.h>

namespace oz::services {

/*!
 * A state object of a service. Each publish gives the whole state, of which only changes reach subscribers.
 * A state that cannot be written now is written as soon as possible, the newest one alone.
 */
class StatePublisher final : public TreeObject
{
public:
    StatePublisher(Tree &tree, const QString &path, mode_t mode = 0644);

    /*! Makes the object stand, and keeps the attributes that a former daemon left. */
    void stand();
    /*! Makes these attributes the object's only ones. */
    void publish(const QVariantMap &attributes);

private:
    Failure put() override;

    PpsPublisher m_publisher;
    std::optional<QVariantMap> m_attributes; // nothing while it only stands
};

/*! Adds the attribute \a name where its value is known. */
template <typename Value>
void insertKnown(QVariantMap *attributes, const QString &name, const std::optional<Value> &value)
{
    if (value)
        attributes->insert(name, *value);
}

} // namespace oz::services
