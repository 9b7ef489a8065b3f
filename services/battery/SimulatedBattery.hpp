#pragma once

#include "battery/Battery.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

/*! The phone's battery and chargers: the section "battery". The level moves as time goes by. */
class SimulatedBattery final : public BatterySource, public PartOfTable<SimulatedBattery>
{
public:
    SimulatedBattery(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedBattery> &table();

private:
    [[nodiscard]] int chargers() const { return int(m_plugged) + int(!m_receiver.isEmpty()); }
    [[nodiscard]] bool takesCharge() const;
    [[nodiscard]] Battery::Charging charging() const;
    [[nodiscard]] int step() const;
    void update() override;

    bool m_present = true;
    bool m_isHeld = false;
    bool m_plugged = false;
    QString m_receiver;
    int m_level = 0; // also of one that is taken out
    std::optional<Battery::Condition> m_condition;
    int m_fullChargeCapacity = 0;
    int m_cycleCount = 0;
    std::optional<double> m_temperature;
    std::chrono::milliseconds m_chargingPace{}; // for one percent
    std::chrono::milliseconds m_dischargingPace{};
    int m_step = 0; // of the level, at the end of the timer's current interval
    PhoneTimer m_timer;
};

} // namespace oz::services
