#pragma once

#include "phone/SimulatedPhone.hpp"
#include "radio/RadioSource.hpp"

namespace oz::services {

class SimulatedNetworks;

/*!
 * The phone's radio: the section "radio". It decides which networks may serve, and whether there is mobile
 * data.
 */
class SimulatedRadio final : public RadioSource, public SimulatedPart
{
    Q_OBJECT

public:
    SimulatedRadio(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

    /*! Whether the user has switched mobile data on. */
    [[nodiscard]] bool isDataOn() const { return m_data; }
    /*! Whether the user allows mobile data while roaming. */
    [[nodiscard]] bool allowsDataRoaming() const { return m_dataRoaming; }
    /*! Whether mobile data runs over a network other than the home network. */
    [[nodiscard]] bool isDataRoaming() const;
    /*! Why no mobile data can flow now; empty where it can. */
    [[nodiscard]] QString dataObstacle() const;

Q_SIGNALS:
    /*! Something of mobile data, or of the radio, may be another by now. It follows changed(). */
    void dataChanged();

private:
    void allowNetworks();
    void tell();

    std::shared_ptr<SimulatedNetworks> m_networks;
    RadioState m_state; // what the hardware is
    QStringList m_technologies; // of the hardware
    QStringList m_enabled; // technologies
    bool m_poweredOn;
    bool m_data;
    bool m_dataRoaming;
};

} // namespace oz::services
