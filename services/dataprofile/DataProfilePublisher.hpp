#pragma once

#include "core/ControlObject.hpp"
#include "core/StatePublisher.hpp"
#include "dataprofile/DataProfileSource.hpp"

#include <map>

namespace oz::services {

/*!
 * The connection service. It publishes "/pps/services/cds/cnice/status": "data_services_status",
 * "data_roaming_status", "user_enabled_data_roaming" and one attribute a profile, of the profile's name. It
 * serves, beside it, "NAME_control" of each profile with the requests "connect", answered with "connect_id",
 * and "disconnect", which names that id. A connection outlives the client that asked for it.
 */
class DataProfilePublisher : public QObject
{
public:
    explicit DataProfilePublisher(DataProfileSource &source);

private:
    void publish();
    void serve(const QString &profile, mode_t mode);
    [[nodiscard]] Reply onRequest(const QString &profile, const Request &request);

    DataProfileSource &m_source;
    StatePublisher m_status;
    std::map<QString, ControlObject> m_controls;
};

} // namespace oz::services
