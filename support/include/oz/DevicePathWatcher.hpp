#pragma once

#include <oz/DeviceRoot.hpp>
#include <oz/OzSupportGlobal.hpp>

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

namespace oz {

/*!
 * Tells when something may have come to lie at a device path, or have gone from it, for those who wait for an
 * object or a device that is not there: it watches the folders on the way there, as they come and go.
 *
 * An instance belongs to the thread that it lives on, which needs an event loop.
 */
class OZ_SUPPORT_EXPORT DevicePathWatcher : public QObject
{
    Q_OBJECT

public:
    /*! Watches from now on: what is there already is for the caller to see. \a path is below \a root. */
    explicit DevicePathWatcher(
        const QString &path, const QString &root = deviceRoot(), QObject *parent = nullptr);

Q_SIGNALS:
    /*! Something may lie at the path now, or lie there no more. */
    void changed();

private:
    void watchFolders();

    const QString m_root;
    const QString m_file;
    QFileSystemWatcher m_watcher;
};

} // namespace oz
