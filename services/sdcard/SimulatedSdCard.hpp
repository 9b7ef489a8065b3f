#pragma once

#include "phone/SimulatedPart.hpp"
#include "sdcard/SdCard.hpp"

namespace oz::services {

/*! The phone's card slot: the section "sdcard". */
class SimulatedSdCard final : public SdCardSource, public PartOfTable<SimulatedSdCard>
{
public:
    SimulatedSdCard(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedSdCard> &table();

private:
    void setMounted(bool mounted);
    void setBusy(bool busy);
    void update() override;

    bool m_mounted = false;
    bool m_busy = false;
};

} // namespace oz::services
