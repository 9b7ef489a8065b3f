#pragma once

#include "hardware/HardwareSource.hpp"
#include "linux/BusObjects.hpp"
#include "linux/UdevMonitor.hpp"

namespace oz::services {

/*!
 * The device that Linux runs on: its names by hostnamed, all else by the kernel and udev, and its names too
 * where there is no hostnamed. What hostnamed has said holds when it ends, as it does while nobody asks it.
 */
class LinuxHardware final : public HardwareSource
{
public:
    explicit LinuxHardware(std::shared_ptr<SystemBus> bus);

private:
    void readKernel();
    void hearNames();
    void tell();

    BusService m_hostnamed;
    BusObjects m_objects;
    QTimer m_change; // of the devices, until it is over
    UdevMonitor m_inputs;
    UdevMonitor m_connectors;
    std::optional<QVariantMap> m_names; // as hostnamed told them last; none where it tells nothing
    std::optional<HardwareState> m_kernel;
    bool m_isReading = false;
    bool m_readsAgain = false;
};

} // namespace oz::services
