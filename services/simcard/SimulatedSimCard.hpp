#pragma once

#include "phone/SimulatedPart.hpp"
#include "simcard/SimCard.hpp"

namespace oz::services {

/*! The phone's SIM card: the section "simcard". What can be read of it depends on its state. */
class SimulatedSimCard final : public SimCardSource, public PartOfTable<SimulatedSimCard>
{
public:
    SimulatedSimCard(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedSimCard> &table();
    [[nodiscard]] bool isReady() const { return m_card == SimCard::State::Ready; }

private:
    void update() override;

    SimCard::State m_card = SimCard::State::Ready;
    SimCard m_held; // what is on it, but for the state
};

} // namespace oz::services
