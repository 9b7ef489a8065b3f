#pragma once

#include "ozdevice/EventLoop.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFileInfo>
#include <QFileSystemWatcher>

namespace oz::tools {

/*! Ends \a loop with an error when the device root is removed, as at the end of `ozdevice run`. */
class DeviceRootWatch
{
public:
    explicit DeviceRootWatch(EventLoop *loop) : m_watcher({deviceRoot()})
    {
        QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, [loop](const QString &root) {
            loop->guard([&] {
                if (!QFileInfo::exists(root)) {
                    throw CommandError(Unavailable, "the device root "_L1 + root + " is gone"_L1);
                }
            });
        });
    }

private:
    QFileSystemWatcher m_watcher;
};

} // namespace oz::tools
