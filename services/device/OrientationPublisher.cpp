#include "device/OrientationPublisher.hpp"

namespace oz::services {

namespace {
// In the order of Orientation.
constexpr const char *Texts[] = {
    "top-up", "bottom-up", "left-up", "right-up", "face-up", "face-down", "undefined"};
} // namespace

OrientationPublisher::OrientationPublisher(const QString &facility, OrientationSource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_sensor(tree, QStringLiteral("/pps/services/sensors/orientation"))
{
    declare(m_sensor);
    follow();
}

void OrientationPublisher::publishState(const Orientation &orientation)
{
    m_sensor.publish({{QStringLiteral("orientation"), QLatin1String(Texts[int(orientation)])}});
}

} // namespace oz::services
