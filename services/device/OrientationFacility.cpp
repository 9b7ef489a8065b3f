#include "device/OrientationPublisher.hpp"
#include "device/SensorProxyOrientation.hpp"
#include "device/SimulatedOrientation.hpp"
#include "facility/BusKind.hpp"

namespace oz::services {

Facility orientationFacility()
{
    return describeFacility<OrientationSource, SimulatedOrientation>(QStringLiteral("orientation"),
        QStringLiteral("Orientation"), {&orientationFields()},
        {busKind<SensorProxyOrientation>(
            QStringLiteral("iio-sensor-proxy"), QStringLiteral("the accelerometer, by iio-sensor-proxy"))})
        .publishedBy<OrientationPublisher>();
}

} // namespace oz::services
