#pragma once

#include "publishing/Publisher.hpp"
#include "radio/RadioSource.hpp"

namespace oz::services {

/*!
 * Publishes, in "/pps/services/cellular/radioctrl/", "status_public" ("power_status", "provider_capability",
 * "network_technology", "band_capability") and "status_persistent" ("configured_technologies").
 */
class RadioPublisher final : public PublisherOf<RadioSource>
{
public:
    RadioPublisher(const QString &facility, RadioSource &source, Tree &tree);

private:
    void publishState(const RadioState &state) override;

    StatePublisher m_public;
    StatePublisher m_persistent;
    StatePublisher m_connections; // the connection service's: it stands for the radio's clients too
};

} // namespace oz::services
