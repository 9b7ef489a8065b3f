#pragma once

#include "battery/BatterySource.hpp"
#include "core/StatePublisher.hpp"

namespace oz::services {

/*! Publishes "/pps/system/BattMgr/status": "SystemInfo", "ChargerInfo", "BatteryInfo" and "WlcSourceInfo". */
class BatteryPublisher : public QObject
{
public:
    explicit BatteryPublisher(BatterySource &source);

private:
    void publish();

    BatterySource &m_source;
    StatePublisher m_status;
};

} // namespace oz::services
