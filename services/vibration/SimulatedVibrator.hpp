#pragma once

#include "phone/SimulatedPart.hpp"
#include "vibration/Vibration.hpp"

namespace oz::services {

/*! The phone's vibration motor: the section "vibration". */
class SimulatedVibrator final : public VibrationSource, public PartOfTable<SimulatedVibrator>
{
public:
    SimulatedVibrator(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedVibrator> &table();
    /*! Nothing shakes; what the motor does is told by the service's activity. */
    void drive(int, const Done &done) override { done({}); }

private:
    void update() override;

    bool m_present = true;
};

} // namespace oz::services
