#pragma once

#include "device/OrientationSource.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*!
 * Publishes "/pps/services/sensors/orientation" for the orientation sensor: "orientation", which is "top-up",
 * "bottom-up", "left-up", "right-up", "face-up", "face-down" or "undefined".
 */
class OrientationPublisher final : public PublisherOf<OrientationSource>
{
public:
    OrientationPublisher(const QString &facility, OrientationSource &source, Tree &tree);

private:
    void publishState(const Orientation &orientation) override;

    StatePublisher m_sensor;
};

} // namespace oz::services
