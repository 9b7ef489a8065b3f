#pragma once

#include "phone/SimulatedPart.hpp"
#include "radio/Radio.hpp"

namespace oz::services {

class SimulatedNetworks;

/*!
 * The phone's radio: the section "radio". It decides which networks may serve, and whether there is mobile
 * data.
 */
class SimulatedRadio final : public RadioSource, public PartOfTable<SimulatedRadio>
{
    Q_OBJECT

public:
    SimulatedRadio(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedRadio> &table();
    [[nodiscard]] std::vector<Setting> settings(const QString &instance) override;

    /*! True if the user has switched mobile data on. */
    [[nodiscard]] bool isDataOn() const { return m_data; }
    /*! True if the user allows mobile data while roaming. */
    [[nodiscard]] bool allowsDataRoaming() const { return m_dataRoaming; }
    /*! True if mobile data runs over a network other than the home network. */
    [[nodiscard]] bool isDataRoaming() const;
    /*! Why no mobile data can flow now; empty where it can. */
    [[nodiscard]] QString dataObstacle() const;

Q_SIGNALS:
    /*! Something of mobile data, or of the radio, may be another by now. It follows changed(). */
    void dataChanged();

private:
    void readBands(const JsonNode &bands);
    void update() override;
    void tell();

    std::shared_ptr<SimulatedNetworks> m_networks;
    Radio::Bands m_bands; // of the hardware, like the next two
    QStringList m_services;
    QStringList m_technologies;
    QStringList m_enabled; // technologies
    bool m_poweredOn = false;
    bool m_data = false;
    bool m_dataRoaming = false;
};

} // namespace oz::services
