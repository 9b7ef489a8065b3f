#pragma once

#include "device/ActivitySource.hpp"
#include "phone/SimulatedPhone.hpp"

namespace oz::services {

/*! Whether somebody uses the phone: the section "activity". Nobody does after a while without being told
 * otherwise. */
class SimulatedActivity final : public ActivitySource, public SimulatedPart
{
public:
    SimulatedActivity(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

private:
    void become(bool isUsed);
    void tell();

    ActivityState m_state;
    std::chrono::milliseconds m_idleTime; // none: it stays used
    PhoneTimer m_idle;
};

} // namespace oz::services
