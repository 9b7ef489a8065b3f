#pragma once

#include "battery/BatterySource.hpp"
#include "linux/BusSource.hpp"
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
    /*! What the kernel alone tells. */
    struct Kernel
    {
        SysFolder::Values battery;
        QString wirelessReceiver;
    };

    void look() override;
    void readKernel();
    [[nodiscard]] QString batteryPath() const;
    [[nodiscard]] QVariant of(const QString &path, const char *property) const;
    [[nodiscard]] BatteryState stateFrom(const QString &path, const Kernel &kernel) const;
    void take(const BatteryState &state);

    QString m_device;
    bool m_hadBattery = false;
    bool m_isReading = false;
    bool m_readsAgain = false;
};

} // namespace oz::services
