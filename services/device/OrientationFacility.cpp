#include "device/OrientationPublisher.hpp"
#include "device/SensorProxyOrientation.hpp"
#include "device/SimulatedOrientation.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility orientationFacility()
{
    const SourceKind proxy{QStringLiteral("iio-sensor-proxy"),
        QStringLiteral("the accelerometer, by iio-sensor-proxy"), {},
        [](Providers &providers, const SourceOptions &) -> std::shared_ptr<Source> {
            return std::make_shared<SensorProxyOrientation>(providers.shared<SystemBus>());
        },
        noObstacle};
    return describeFacility<OrientationSource, OrientationPublisher, SimulatedOrientation>(
        QStringLiteral("orientation"), {proxy});
}

} // namespace oz::services
