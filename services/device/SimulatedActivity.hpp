#pragma once

#include "device/Activity.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

/*! Tells whether somebody uses the phone: the section "activity". Nobody does after a while without being
 * told otherwise. */
class SimulatedActivity final : public ActivitySource, public PartOfTable<SimulatedActivity>
{
public:
    SimulatedActivity(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedActivity> &table();
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() override;
    void restore(const QVariantMap &saved) override;

private:
    void readOthers(const JsonNode &others);
    void setUsed(const QString &word);
    void update() override;

    bool m_isUsed = true;
    QMap<QString, QString> m_others; // statuses of the power manager
    std::chrono::milliseconds m_idleTime{}; // none: it stays used
    PhoneTimer m_idle;
};

} // namespace oz::services
