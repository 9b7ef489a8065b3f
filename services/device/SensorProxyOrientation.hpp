#pragma once

#include "device/Orientation.hpp"
#include "linux/BusSource.hpp"

namespace oz::services {

/*!
 * How the device is held, by the accelerometer of iio-sensor-proxy. The sensor costs power, so it is claimed
 * while somebody reads, and for the grace time after the start and after the last reader.
 */
class SensorProxyOrientation final : public BusSource<OrientationSource>
{
public:
    explicit SensorProxyOrientation(std::shared_ptr<SystemBus> bus);

    void setRead(bool isRead) override;

private:
    void readState() override;
    void claim(bool isWanted);

    bool m_isRead = false;
    bool m_isClaimed = false;
    QTimer m_lingering; // while it is claimed though nobody reads
    QTimer m_measuring; // while what the service says may be from before it was claimed
};

} // namespace oz::services
