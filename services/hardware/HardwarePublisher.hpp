#pragma once

#include "core/StatePublisher.hpp"
#include "hardware/HardwareSource.hpp"

namespace oz::services {

/*!
 * Publishes "/pps/services/private/deviceproperties" (the identifiers, for owner and group only),
 * "/pps/services/deviceproperties" (the names) and "/pps/services/hw_info/inventory" (the parts).
 */
class HardwarePublisher : public QObject
{
public:
    explicit HardwarePublisher(HardwareSource &source);

private:
    void publish();

    HardwareSource &m_source;
    StatePublisher m_identifiers;
    StatePublisher m_names;
    StatePublisher m_inventory;
};

} // namespace oz::services
