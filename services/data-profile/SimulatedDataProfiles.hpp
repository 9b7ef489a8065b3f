#pragma once

#include "data-profile/DataProfiles.hpp"
#include "phone/SimulatedPart.hpp"

#include <QSet>

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
    SimulatedDataProfiles(const JsonNode &section, SimulatedParts &phone);

    void connectProfile(const QString &profile, const Done &done) override;
    void disconnectProfile(const QString &profile, const QString &connectionId, const Done &done) override;

    [[nodiscard]] QStringList instances() const override;
    [[nodiscard]] QString instancesKey() const override { return QStringLiteral("profiles"); }
    [[nodiscard]] std::vector<Setting> settings(const QString &instance) override;
    [[nodiscard]] static const Settings<SimulatedDataProfiles> &table();
    [[nodiscard]] static InstanceSettings instanceSettings()
    {
        return {QStringLiteral("profiles"), profileTable().of(nullptr)};
    }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() override;
    void restore(const QVariantMap &saved) override;

private:
    struct Known
    {
        explicit Known(PhoneClock &clock) : establishing(clock) { }

        DataProfiles::Profile profile;
        bool permitted = true;
        QSet<QString> users; // the ids of their connections
        PhoneTimer establishing;

        void setPermitted(bool on);
    };

    [[nodiscard]] static const Settings<Known> &profileTable();

    void readProfile(const QString &name, const JsonNode &node);
    static void end(Known &known);
    void update() override;
    void establishAtOnce();
    void tell();

    PhoneClock &m_clock;
    std::shared_ptr<SimulatedRadio> m_radio;
    std::chrono::milliseconds m_connectTime{};
    std::map<QString, Known> m_known;
};

} // namespace oz::services
