#pragma once

#include "core/SimulatedPhone.hpp"
#include "vibration/VibrationSource.hpp"

namespace oz::services {

/*! The phone's vibration motor: the section "vibration". */
class SimulatedVibrator final : public VibrationSource, public SimulatedPart
{
public:
    explicit SimulatedVibrator(const JsonNode &section);

    [[nodiscard]] bool isPresent() const override { return m_present; }
    /*! Nothing shakes; what the motor does is told by the service's activity. */
    void drive(int) override { }
    [[nodiscard]] QString name() const override { return QStringLiteral("vibration"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &) override;

private:
    bool m_present;
};

} // namespace oz::services
