#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <map>
#include <memory>

namespace oz::services {

class Tree;

/*!
 * Notices when an application begins to use the tree. It misses nothing that happens after it was made, and
 * needs no help from the application: the kernel tells which state objects are opened, the services which
 * clients connect. What the services themselves do, and the daemon's own objects, which tools use, do not
 * count.
 */
class ApplicationWatch : public QObject
{
    Q_OBJECT

public:
    /*! The event that ends the wait for an application. */
    enum class For {
        Open, //!< open a state object, or connect to a control object or device
        Request, //!< send something to a control object or device
    };

    ApplicationWatch(const Tree &tree, For what);
    ~ApplicationWatch() override;

    /*! True if it has happened by now. */
    [[nodiscard]] bool hasCome();

Q_SIGNALS:
    /*! It has happened. Emitted once. */
    void came();

private:
    void watchFolderOf(const QString &path);
    /*! Takes in what the kernel tells of opens, but for those of the object at \a except. */
    void look(const QString &except = {});
    void onUse(const QString &path);

    const Tree &m_tree;
    int m_inotify = -1;
    std::map<int, QByteArray> m_folders; // by watch descriptor
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_hasCome = false;
};

} // namespace oz::services
