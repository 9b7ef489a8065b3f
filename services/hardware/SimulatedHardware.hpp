#pragma once

#include "hardware/Hardware.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

/*! The phone's hardware and names: the section "hardware". Only the device's name changes. */
class SimulatedHardware final : public HardwareSource, public PartOfTable<SimulatedHardware>
{
public:
    SimulatedHardware(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedHardware> &table();

    /*! True if the phone can show its screen on wireless displays. */
    [[nodiscard]] bool hasMiracast() const { return m_hasMiracast; }

private:
    void readProcessors(const JsonNode &section);
    void update() override;

    Hardware m_state;
    bool m_hasMiracast = true;
};

} // namespace oz::services
