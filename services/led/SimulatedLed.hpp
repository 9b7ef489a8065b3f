#pragma once

#include "led/Led.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

/*! The phone's notification LED: the section "led". The service has the requests; what is lit follows from
 * them. */
class SimulatedLed final : public LedSource, public PartOfTable<SimulatedLed>
{
public:
    SimulatedLed(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedLed> &table();
    void light(const LedState::Elements &elements, const Done &done) override;

private:
    LedState m_state;
};

} // namespace oz::services
