#pragma once

#include "hardware/Hardware.hpp"
#include "linux/BusObjects.hpp"
#include "linux/LatestReading.hpp"
#include "linux/ModemManager.hpp"
#include "linux/UdevMonitor.hpp"

namespace oz::services {

/*!
 * The device that Linux runs on: its names by hostnamed, all else by the kernel and udev, and its names too
 * where there is no hostnamed; what identifies its modem is ModemManager's. What hostnamed has said holds
 * when it ends, as it does while nobody asks it.
 */
class LinuxHardware final : public HardwareSource
{
public:
    LinuxHardware(std::shared_ptr<SystemBus> bus, std::shared_ptr<ModemManager> modems);

private:
    void hearNames();
    void hearModem();
    void tell();

    std::shared_ptr<ModemManager> m_modems;
    QString m_modem; // its path
    std::optional<QString>
        m_imei; // as told last: a modem manager that restarts changes nothing about the device
    std::optional<QString> m_meid;
    BusService m_hostnamed;
    BusObjects m_objects;
    QTimer m_change; // of the devices, until it is over
    UdevMonitor m_inputs;
    UdevMonitor m_connectors;
    std::optional<QVariantMap> m_names; // as hostnamed told them last; none where it tells nothing
    std::optional<Hardware> m_kernel;
    LatestReading<Hardware> m_reading;
};

} // namespace oz::services
