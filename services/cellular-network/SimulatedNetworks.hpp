#pragma once

#include "cellular-network/CellularNetworks.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

class SimulatedSimCard;

/*!
 * The networks around the phone: the section "cellular-network". The phone uses one CDMA 1X network and one
 * of any other technology at most. Without a ready SIM card they offer emergency calls alone.
 */
class SimulatedNetworks final : public CellularNetworkSource, public SimulatedPart
{
    Q_OBJECT

public:
    SimulatedNetworks(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] QStringList instances() const override;
    [[nodiscard]] QString instancesKey() const override { return QStringLiteral("networks"); }
    [[nodiscard]] std::vector<Setting> settings(const QString &instance) override;
    [[nodiscard]] static const Settings<SimulatedNetworks> &table();
    [[nodiscard]] static InstanceSettings instanceSettings()
    {
        return {QStringLiteral("networks"), networkTable().of(nullptr)};
    }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

    /*! Lets networks of these technologies serve, and no others. */
    void allow(const QList<Technology> &technologies);
    /*! The technology of each network in use. */
    [[nodiscard]] QList<Technology> servingTechnologies() const;
    /*! The network over which mobile data runs; null where there is none. */
    [[nodiscard]] const CellularNetworks::Network *dataNetwork() const;

Q_SIGNALS:
    /*! Follows changed(): what the networks are like is published before that they serve. */
    void served();

private:
    struct Known
    {
        QString name;
        Technology technology = Technology::Lte;
        CellularNetworks::Network network;
        bool chosen = false; // serves where its technology is allowed

        void setOperator(const QString &called);
    };

    [[nodiscard]] static const Settings<Known> &networkTable();
    [[nodiscard]] static std::vector<Setting> settingsOf(Known &known);
    [[nodiscard]] static Known readNetwork(const QString &name, const JsonNode &node);
    [[nodiscard]] Known &find(const QString &name);
    [[nodiscard]] QStringList chosen() const;
    void setChosen(const QStringList &names);
    void choose(Known &known);
    [[nodiscard]] bool serves(const Known &known) const;
    [[nodiscard]] static bool isCdma1x(const Known &known);
    void update() override;

    std::shared_ptr<SimulatedSimCard> m_simCard;
    QList<Technology> m_allowed;
    std::vector<Known> m_known;
};

} // namespace oz::services
