#pragma once

#include "core/SimulatedPhone.hpp"
#include "hardware/HardwareSource.hpp"

namespace oz::services {

/*! What the phone is: the section "hardware", of which only the device's name changes. */
class SimulatedHardware : public HardwareSource, public SimulatedPart
{
public:
    explicit SimulatedHardware(const JsonNode &section);

    [[nodiscard]] std::optional<State> state() const override { return m_state; }
    [[nodiscard]] QString name() const override { return QStringLiteral("hardware"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

private:
    State m_state;
};

} // namespace oz::services
