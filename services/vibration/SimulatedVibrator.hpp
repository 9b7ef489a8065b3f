#pragma once

#include "phone/SimulatedPhone.hpp"
#include "vibration/VibrationSource.hpp"

namespace oz::services {

/*! The phone's vibration motor: the section "vibration". */
class SimulatedVibrator final : public VibrationSource, public SimulatedPart
{
public:
    SimulatedVibrator(const JsonNode &section, SimulatedPhone &phone);

    /*! Nothing shakes; what the motor does is told by the service's activity. */
    void drive(int, const Done &done) override { done({}); }

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

private:
    void become(bool present);

    bool m_present;
};

} // namespace oz::services
