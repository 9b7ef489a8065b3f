#pragma once

#include "core/SimulatedPhone.hpp"
#include "dataprofile/DataProfileSource.hpp"

#include <QSet>
#include <QTimer>

#include <map>

namespace oz::services {

class SimulatedRadio;

/*!
 * The phone's data profiles: the section "data-profile". They are connected while there is mobile data and
 * somebody, or their being always on, wants them to be. Where mobile data ends, all connections end.
 */
class SimulatedDataProfiles final : public DataProfileSource, public SimulatedPart
{
public:
    SimulatedDataProfiles(const JsonNode &section, const SimulatedRadio &radio);

    [[nodiscard]] std::optional<State> state() const override;
    [[nodiscard]] Result connectProfile(const QString &profile) override;
    [[nodiscard]] Result disconnectProfile(const QString &profile, const QString &connectionId) override;
    [[nodiscard]] std::optional<Mishap> takeMishap(const QString &profile, const QString &message) override;
    [[nodiscard]] QString name() const override { return QStringLiteral("data-profile"); }
    [[nodiscard]] QStringList instances() const override;
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

private:
    struct Known
    {
        Profile profile;
        bool permitted = true;
        QSet<QString> users; // the ids of their connections
        Mishaps mishaps;
        QTimer establishing;
    };

    void readProfile(const QString &name, const JsonNode &node);
    static void end(Known &known);
    void update();

    const SimulatedRadio &m_radio;
    std::chrono::milliseconds m_connectTime;
    std::map<QString, Known> m_known;
};

} // namespace oz::services
