#pragma once

#include "devices/OpenDevice.hpp"

#include <oz/DevicePathWatcher.hpp>

#include <QObject>

namespace oz {

/*!
 * The wait for another service of a device, on the platform's own thread: it watches the folders on the way
 * to the device, and tells the next service what the client had said.
 */
class DeviceReturn final : public QObject, private ServiceReturn::Owner
{
    Q_OBJECT

public:
    /*! Begins to wait, where \a device is still open, as a child of \a context. */
    static void await(const std::shared_ptr<OpenDevice> &device, QObject *context);

private:
    DeviceReturn(const std::shared_ptr<OpenDevice> &device, QObject *context);

    int lookForService() override;
    void judgeLoss() override;
    [[nodiscard]] int connectAgain();

    std::shared_ptr<OpenDevice> m_device;
    DevicePathWatcher m_watcher;
    ServiceReturn m_return;
};

} // namespace oz
