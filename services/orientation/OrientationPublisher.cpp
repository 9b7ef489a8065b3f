#include "orientation/OrientationPublisher.hpp"

namespace oz::services {

const QStringList &OrientationSource::orientations()
{
    static const QStringList all{QStringLiteral("top-up"), QStringLiteral("bottom-up"),
        QStringLiteral("left-up"), QStringLiteral("right-up"), QStringLiteral("face-up"),
        QStringLiteral("face-down"), QStringLiteral("undefined")};
    return all;
}

OrientationPublisher::OrientationPublisher(OrientationSource &source)
    : m_source(source), m_sensor(QStringLiteral("/pps/services/sensors/orientation"))
{
    connect(&source, &OrientationSource::changed, this, &OrientationPublisher::publish);
    publish();
}

void OrientationPublisher::publish()
{
    if (const auto orientation = m_source.orientation())
        m_sensor.publish({{QStringLiteral("orientation"), *orientation}});
}

} // namespace oz::services
