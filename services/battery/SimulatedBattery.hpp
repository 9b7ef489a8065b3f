#pragma once

#include "battery/BatterySource.hpp"
#include "phone/SimulatedPhone.hpp"

namespace oz::services {

/*! The phone's battery and chargers: the section "battery". The level moves as time goes by. */
class SimulatedBattery final : public BatterySource, public SimulatedPart
{
public:
    SimulatedBattery(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

private:
    [[nodiscard]] int chargers() const { return int(m_plugged) + int(!m_receiver.isEmpty()); }
    [[nodiscard]] bool takesCharge() const;
    [[nodiscard]] BatteryState::Charging charging() const;
    void update();

    int m_level;
    BatteryState::Battery m_battery; // but for the level
    bool m_present;
    bool m_plugged;
    QString m_receiver;
    bool m_isHeld = false; // as it was told, whatever the chargers do
    std::chrono::milliseconds m_chargingPace; // for one percent
    std::chrono::milliseconds m_dischargingPace;
    int m_step = 0; // of the level, at the end of the timer's current interval
    PhoneTimer m_timer;
};

} // namespace oz::services
