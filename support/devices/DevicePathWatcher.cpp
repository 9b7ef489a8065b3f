#include <oz/DevicePathWatcher.hpp>

#include <QFileInfo>
#include <QTimer>

#include <chrono>

namespace oz {

namespace {

// For folders that the kernel has no watch left for.
constexpr std::chrono::seconds LookInterval(1);

} // namespace

DevicePathWatcher::DevicePathWatcher(const QString &path, const QString &root, QObject *parent)
    : QObject(parent), m_root(root), m_file(root + path)
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        watchFolders();
        Q_EMIT changed();
    });
    watchFolders();
}

// All that are there below the root, or else the one where the root will be.
void DevicePathWatcher::watchFolders()
{
    if (const QStringList former = m_watcher.directories(); !former.isEmpty())
        m_watcher.removePaths(former);
    QStringList folders;
    QString folder = m_file;
    do {
        folder = QFileInfo(folder).path();
        if (QFileInfo(folder).isDir())
            folders.append(folder);
    } while (folder != QLatin1String("/") && (folder.size() > m_root.size() || folders.isEmpty()));
    if (!m_watcher.addPaths(folders).isEmpty()) {
        QTimer::singleShot(LookInterval, this, [this] {
            watchFolders();
            Q_EMIT changed();
        });
    }
}

} // namespace oz
