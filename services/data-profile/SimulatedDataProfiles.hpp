#pragma once

#include "data-profile/DataProfileSource.hpp"
#include "phone/SimulatedPhone.hpp"

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
    SimulatedDataProfiles(const JsonNode &section, SimulatedPhone &phone);

    void connectProfile(const QString &profile, const Done &done) override;
    void disconnectProfile(const QString &profile, const QString &connectionId, const Done &done) override;

    [[nodiscard]] QStringList instances() const override;
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

private:
    struct Known
    {
        explicit Known(PhoneClock &clock) : establishing(clock) { }

        DataProfileState::Profile profile;
        bool permitted = true;
        QSet<QString> users; // the ids of their connections
        PhoneTimer establishing;
    };

    void readProfile(const QString &name, const JsonNode &node);
    static void end(Known &known);
    void update();
    void establishAtOnce();
    void tell();

    PhoneClock &m_clock;
    std::shared_ptr<SimulatedRadio> m_radio;
    std::chrono::milliseconds m_connectTime;
    std::map<QString, Known> m_known;
};

} // namespace oz::services
