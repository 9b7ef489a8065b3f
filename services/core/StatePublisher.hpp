#pragma once

#include <oz/PpsPublisher.hpp>

#include <QVariantMap>

#include <optional>
#include <sys/types.h>

namespace oz::services {

/*!
 * A state object of a service. The first publish replaces whatever a former daemon left, in one step, so
 * nobody sees anything in between; each later one gives the whole state again, of which only changes reach
 * subscribers.
 */
class StatePublisher
{
public:
    explicit StatePublisher(const QString &path, mode_t mode = 0644);

    /*! Publishes the object's attributes; see Startup::fail() for where that fails. */
    void publish(const QVariantMap &attributes);

private:
    PpsPublisher m_publisher;
};

/*! Adds the attribute \a name where its value is known. */
template <typename Value>
void insertKnown(QVariantMap *attributes, const QString &name, const std::optional<Value> &value)
{
    if (value)
        attributes->insert(name, *value);
}

} // namespace oz::services
