#pragma once

#include "hardware/HardwareSource.hpp"
#include "phone/SimulatedPhone.hpp"

namespace oz::services {

/*! What the phone is: the section "hardware", of which only the device's name changes. */
class SimulatedHardware final : public HardwareSource, public SimulatedPart
{
public:
    SimulatedHardware(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

    /*! Whether the phone can show its screen on wireless displays. */
    [[nodiscard]] bool hasMiracast() const { return m_hasMiracast; }

private:
    HardwareState m_state;
    bool m_hasMiracast = true;
};

} // namespace oz::services
