#pragma once

#include "core/StatePublisher.hpp"
#include "radio/RadioSource.hpp"

namespace oz::services {

/*!
 * Publishes, in "/pps/services/cellular/radioctrl/", "status_public" ("power_status", "provider_capability",
 * "network_technology", "band_capability") and "status_persistent" ("configured_technologies").
 */
class RadioPublisher : public QObject
{
public:
    explicit RadioPublisher(RadioSource &source);

private:
    void publish();

    RadioSource &m_source;
    StatePublisher m_public;
    StatePublisher m_persistent;
};

} // namespace oz::services
