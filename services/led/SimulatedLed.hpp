#pragma once

#include "led/LedSource.hpp"
#include "phone/SimulatedPhone.hpp"

namespace oz::services {

/*! The phone's notification LED: the section "led". */
class SimulatedLed final : public LedSource, public SimulatedPart
{
public:
    SimulatedLed(const JsonNode &section, SimulatedPhone &phone);

    void light(const LedState::Elements &elements, const Done &done) override;

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &) override { return {}; }
    /*! The service has the requests; what is lit follows from them. */
    [[nodiscard]] QVariantMap saved() const override { return {}; }
    void restore(const QVariantMap &) override { }

private:
    LedState m_state;
};

} // namespace oz::services
