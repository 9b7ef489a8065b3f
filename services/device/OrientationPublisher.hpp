#pragma once

#include "device/Orientation.hpp"
#include "publishing/FieldsPublisher.hpp"

namespace oz::services {

/*! Publishes the orientation for the orientation sensor. Whoever reads it holds
 * "/pps/services/sensors/orientation-readers" open, to have it measured. */
class OrientationPublisher final : public FieldsPublisher<OrientationSource>
{
public:
    OrientationPublisher(const QString &facility, OrientationSource &source, Tree &tree);
    ~OrientationPublisher() override;

private:
    class Readers;

    std::unique_ptr<Readers> m_readers;
};

} // namespace oz::services
