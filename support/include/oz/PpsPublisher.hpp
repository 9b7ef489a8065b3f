#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <sys/types.h>

namespace oz {

class PpsPublisherPrivate;

/*!
 * Publishes one state object of the tree, as the service that owns it. Any number of processes may publish
 * attributes of one object; none is lost. Each operation replaces the object in one step: readers see it
 * before or after, never between, whatever happens to the publisher.
 *
 * All operations return false on failure, with the errno in error(): EINVAL for a path or attributes that
 * have no text form, EMSGSIZE for an object over 1 MiB, EBUSY where another publisher of the object was
 * stopped in the middle (it is waited for for a second), ELOOP where the object or a folder on the way to it
 * is a link, EPERM for a folder that belongs to a user who is neither this one, nor root, nor the tree's
 * owner, and what the file system says. An instance is used by one thread at a time; it keeps two descriptors
 * from its first publish on.
 */
class OZ_SUPPORT_EXPORT PpsPublisher
{
public:
    /*!
     * Binds to the object at the device path \a path ("/pps/...", without options) under deviceRoot() as it
     * is now. The object is made, with its directories and the file mode \a mode, by the first publish or
     * replace where it is not there. The modes are the only guard of what is private: 0640 for what only its
     * group may read.
     */
    explicit PpsPublisher(const QString &path, mode_t mode = 0644);
    ~PpsPublisher();
    PpsPublisher(const PpsPublisher &) = delete;
    PpsPublisher &operator=(const PpsPublisher &) = delete;

    /*! The device path, as given. */
    [[nodiscard]] QString path() const;

    /*! Sets these attributes and keeps all others. What is there already wakes no subscriber. */
    bool publish(const QVariantMap &attributes);
    /*! Makes these attributes the object's only ones, and the mode that of this publisher. */
    bool replace(const QVariantMap &attributes);
    /*! Takes these attributes away; those that are not there are none. ENOENT where the object is not there.
     */
    bool removeAttributes(const QStringList &names);
    /*! Takes the object away. ENOENT where it is not there. */
    bool remove();

    /*! The errno of the last failure; 0 where there was none. */
    [[nodiscard]] int error() const;
    /*! error() as text, with the attribute, link, folder or object that is the reason where there is one. */
    [[nodiscard]] QString errorString() const;

private:
    std::unique_ptr<PpsPublisherPrivate> d;
};

} // namespace oz
