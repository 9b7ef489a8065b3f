#pragma once

#include <oz/PpsObject.hpp>

#include <QTimer>
#include <QVariantMap>

#include <functional>

namespace oz::client {

/*! A state object of the tree, followed from now on, or from when it is published first. */
class FollowedObject
{
public:
    /*! Calls \a changed with the attributes from the event loop: once they are there, and after each change;
     * without any where the object is removed. */
    FollowedObject(const QString &path, std::function<void(const QVariantMap &attributes)> changed);
    FollowedObject(const FollowedObject &) = delete;
    FollowedObject &operator=(const FollowedObject &) = delete;

    /*! Reads the object now; \a changed is called where it is new. */
    void read();

private:
    void open();

    PpsObject m_object;
    QTimer m_again;
    std::function<void(const QVariantMap &)> m_changed;
    QVariantMap m_attributes;
};

} // namespace oz::client
