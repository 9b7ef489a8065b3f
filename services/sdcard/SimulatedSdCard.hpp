#pragma once

#include "phone/SimulatedPhone.hpp"
#include "sdcard/SdCardSource.hpp"

namespace oz::services {

/*! The phone's card slot: the section "sdcard" with "mounted" and "busy". */
class SimulatedSdCard final : public SdCardSource, public SimulatedPart
{
public:
    SimulatedSdCard(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

private:
    void become(bool mounted, bool busy);

    bool m_mounted;
    bool m_busy;
};

} // namespace oz::services
