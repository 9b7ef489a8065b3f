#pragma once

#include "device/Orientation.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

/*! How the phone is held: the section "orientation". */
class SimulatedOrientation final : public OrientationSource, public PartOfTable<SimulatedOrientation>
{
public:
    SimulatedOrientation(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedOrientation> &table();

private:
    void update() override;

    Orientation m_orientation = Orientation::Undefined;
};

} // namespace oz::services
