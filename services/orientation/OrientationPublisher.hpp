#pragma once

#include "core/StatePublisher.hpp"
#include "orientation/OrientationSource.hpp"

namespace oz::services {

/*! Publishes "/pps/services/sensors/orientation" for the orientation sensor: "orientation", one of
 * OrientationSource::orientations(). */
class OrientationPublisher : public QObject
{
public:
    explicit OrientationPublisher(OrientationSource &source);

private:
    void publish();

    OrientationSource &m_source;
    StatePublisher m_sensor;
};

} // namespace oz::services
