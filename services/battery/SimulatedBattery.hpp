#pragma once

#include "battery/BatterySource.hpp"
#include "core/SimulatedPhone.hpp"

#include <QTimer>

namespace oz::services {

/*! The phone's battery and chargers: the section "battery". The level moves as time goes by. */
class SimulatedBattery : public BatterySource, public SimulatedPart
{
public:
    explicit SimulatedBattery(const JsonNode &section);

    [[nodiscard]] std::optional<State> state() const override;
    [[nodiscard]] QString name() const override { return QStringLiteral("battery"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

private:
    [[nodiscard]] int chargers() const { return int(m_plugged) + int(!m_receiver.isEmpty()); }
    [[nodiscard]] bool takesCharge() const;
    void update();

    Battery m_battery;
    bool m_present;
    bool m_plugged;
    QString m_receiver;
    std::chrono::milliseconds m_chargingPace; // for one percent
    std::chrono::milliseconds m_dischargingPace;
    int m_step = 0; // of the level, at the end of the timer's current interval
    QTimer m_timer;
};

} // namespace oz::services
