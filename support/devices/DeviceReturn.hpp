#pragma once

#include "devices/OpenDevice.hpp"

#include <oz/DevicePathWatcher.hpp>

#include <QObject>

#include <chrono>

namespace oz {

/*!
 * The wait for another service of a device, on the platform's own thread: it watches the folders on the way
 * to the device. A service that lives and has ended the connection is not asked again.
 */
class DeviceReturn final : public QObject
{
    Q_OBJECT

public:
    /*! Begins to wait, where \a device is still open, as a child of \a context. */
    static void await(const std::shared_ptr<OpenDevice> &device, QObject *context);

private:
    DeviceReturn(const std::shared_ptr<OpenDevice> &device, QObject *context);

    void onPathChanged();
    void look();
    [[nodiscard]] int connectAgain();
    void giveUpWhereLost();

    std::shared_ptr<OpenDevice> m_device;
    DevicePathWatcher m_watcher;
    std::chrono::milliseconds m_pause;
};

} // namespace oz
