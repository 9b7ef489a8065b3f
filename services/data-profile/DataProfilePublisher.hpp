#pragma once

#include "data-profile/DataProfiles.hpp"
#include "publishing/Publisher.hpp"

#include <map>

namespace oz::services {

/*!
 * The connection service. It publishes "/pps/services/cds/cnice/status": "data_services_status",
 * "data_roaming_status", "user_enabled_data_roaming" and one attribute a profile, of the profile's name. It
 * serves, beside it, "NAME_control" of each profile with the requests "connect", answered with "connect_id",
 * and "disconnect", which names that id. A connection outlives the client that asked for it.
 */
class DataProfilePublisher final : public PublisherOf<DataProfileSource>
{
public:
    DataProfilePublisher(const QString &facility, DataProfileSource &source, Tree &tree);

    [[nodiscard]] FaultsByInstance faults() override;

private:
    void publishState(const DataProfiles &state) override;
    void publishAbsence() override;
    void serve(const QString &profile, mode_t mode);

    StatePublisher m_status;
    std::map<QString, ControlObject> m_controls;
};

} // namespace oz::services
