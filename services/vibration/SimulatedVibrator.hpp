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
    /*! It shakes nothing; the service's activity shows what the motor does. */
    void drive(int, const Done &done) override { done({}); }

private:
    void update() override;

    bool m_present = true;
};

} // namespace oz::services
