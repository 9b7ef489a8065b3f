#pragma once

#include "cellularnetwork/CellularNetworkSource.hpp"
#include "core/SimulatedPhone.hpp"

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
    SimulatedNetworks(const JsonNode &section, const SimulatedSimCard &simCard);

    [[nodiscard]] std::optional<State> state() const override;
    [[nodiscard]] QString name() const override { return QStringLiteral("cellular-network"); }
    [[nodiscard]] QStringList instances() const override;
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

    /*! Lets networks of these technologies serve, and no others. */
    void allow(const QStringList &technologies);
    /*! The technology of each network in use. */
    [[nodiscard]] QStringList servingTechnologies() const;
    /*! The network over which mobile data runs; null where there is none. */
    [[nodiscard]] const Network *dataNetwork() const;

Q_SIGNALS:
    /*! Follows changed(): what the networks are like is published before that they serve. */
    void served();

private:
    struct Known
    {
        QString name;
        QString technology;
        Network network;
        bool chosen = false; // serves where its technology is allowed
    };

    void readNetworks(const JsonNode &section);
    [[nodiscard]] static Known readNetwork(const QString &name, const JsonNode &node);
    [[nodiscard]] Known &find(const QString &name);
    void choose(Known &known);
    [[nodiscard]] bool serves(const Known &known) const;
    void update();

    const SimulatedSimCard &m_simCard;
    QStringList m_allowed;
    std::vector<Known> m_known;
};

} // namespace oz::services
