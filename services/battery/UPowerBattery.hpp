#pragma once

#include "battery/Battery.hpp"
#include "linux/BusSource.hpp"
#include "linux/LatestReading.hpp"
#include "linux/SysFolder.hpp"

namespace oz::services {

/*!
 * The battery that powers the device, and its chargers, as UPower tells of them; what it does not tell comes
 * from the battery's own folder in /sys. Of several batteries it is the one of the name \a device ("BAT0"),
 * else one that is in use.
 */
class UPowerBattery final : public BusSource<BatterySource>
{
public:
    explicit UPowerBattery(std::shared_ptr<SystemBus> bus, const QString &device = {});

private:
    /*! The values that only the kernel has. */
    struct Kernel
    {
        QString path; //!< of the battery, as UPower calls it
        SysFolder::Values battery;
        QString wirelessReceiver;
    };

    void readState() override;
    [[nodiscard]] bool isIncomplete(const Battery &now, const std::optional<Battery> &before) const override;
    void readKernel();
    [[nodiscard]] QString batteryPath() const;
    [[nodiscard]] QVariant of(const QString &path, const char *property) const;
    [[nodiscard]] Battery currentBattery() const;
    void applyReading();

    QString m_device;
    Kernel m_kernel; // what it told last
    LatestReading<Kernel> m_reading;
    QTimer m_kernelTimeout; // after which the service's news are published without the kernel's
};

} // namespace oz::services
