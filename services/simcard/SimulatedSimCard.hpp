#pragma once

#include "core/SimulatedPhone.hpp"
#include "simcard/SimCardSource.hpp"

namespace oz::services {

/*! The phone's SIM card: the section "simcard". Its state tells what of it can be read. */
class SimulatedSimCard : public SimCardSource, public SimulatedPart
{
public:
    explicit SimulatedSimCard(const JsonNode &section);

    [[nodiscard]] std::optional<State> state() const override;
    [[nodiscard]] QString name() const override { return QStringLiteral("simcard"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

    /*! Whether the phone can register with it. */
    [[nodiscard]] bool isReady() const { return m_state.card == Card::Ready; }

private:
    State m_state; // with everything that the card holds, readable or not
};

} // namespace oz::services
