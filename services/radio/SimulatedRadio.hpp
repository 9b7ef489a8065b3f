#pragma once

#include "core/SimulatedPhone.hpp"
#include "radio/RadioSource.hpp"

namespace oz::services {

class SimulatedNetworks;

/*!
 * The phone's radio: the section "radio". It decides which networks may serve, and whether there is mobile
 * data.
 */
class SimulatedRadio : public RadioSource, public SimulatedPart
{
public:
    SimulatedRadio(const JsonNode &section, SimulatedNetworks &networks);

    [[nodiscard]] std::optional<State> state() const override;
    [[nodiscard]] QString name() const override { return QStringLiteral("radio"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

    /*! Whether the user has switched mobile data on. */
    [[nodiscard]] bool isDataOn() const { return m_data; }
    /*! Whether the user allows mobile data while roaming. */
    [[nodiscard]] bool allowsDataRoaming() const { return m_dataRoaming; }
    /*! Whether mobile data runs over a network other than the home network. */
    [[nodiscard]] bool isDataRoaming() const;
    /*! Why no mobile data can flow now; empty where it can. */
    [[nodiscard]] QString dataObstacle() const;

private:
    void allowNetworks();

    SimulatedNetworks &m_networks;
    State m_state; // but for the networks
    bool m_data;
    bool m_dataRoaming;
};

} // namespace oz::services
