#pragma once

#include "phone/SimulatedPhone.hpp"
#include "simcard/SimCardSource.hpp"

namespace oz::services {

/*! The phone's SIM card: the section "simcard". Its state tells what of it can be read. */
class SimulatedSimCard final : public SimCardSource, public SimulatedPart
{
public:
    SimulatedSimCard(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

    /*! Whether the phone can register with it. */
    [[nodiscard]] bool isReady() const { return m_card == SimCardState::Card::Ready; }

private:
    void become(SimCardState::Card card);

    SimCardState::Card m_card;
    SimCardState m_held; // everything that the card holds, readable or not
};

} // namespace oz::services
