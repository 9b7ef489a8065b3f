#pragma once

#include "device/OrientationSource.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*!
 * Publishes "/pps/services/sensors/orientation" for the orientation sensor: "orientation", which is "top-up",
 * "bottom-up", "left-up", "right-up", "face-up", "face-down" or "undefined", and is not there while nobody
 * measures it. Whoever reads it holds "/pps/services/sensors/orientation-readers" open, to have it measured.
 */
class OrientationPublisher final : public PublisherOf<OrientationSource>
{
public:
    OrientationPublisher(const QString &facility, OrientationSource &source, Tree &tree);
    ~OrientationPublisher() override;

private:
    class Readers;

    void publishState(const OrientationState &state) override;

    StatePublisher m_sensor;
    std::unique_ptr<Readers> m_readers;
};

} // namespace oz::services
