#pragma once

#include "battery/BatterySource.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*! Publishes "/pps/system/BattMgr/status": "SystemInfo", "ChargerInfo", "BatteryInfo" and "WlcSourceInfo". */
class BatteryPublisher final : public PublisherOf<BatterySource>
{
public:
    BatteryPublisher(const QString &facility, BatterySource &source, Tree &tree);

private:
    void publishState(const BatteryState &state) override;

    StatePublisher m_status;
};

} // namespace oz::services
