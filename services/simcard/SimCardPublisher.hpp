#pragma once

#include "core/StatePublisher.hpp"
#include "simcard/SimCardSource.hpp"

namespace oz::services {

/*!
 * Publishes "status_private" ("uicc_state", "hplmn", "iccid") and "status_restricted" ("imsi") in
 * "/pps/services/cellular/uicc/card0/", both for owner and group only.
 */
class SimCardPublisher : public QObject
{
public:
    explicit SimCardPublisher(SimCardSource &source);

private:
    void publish();

    SimCardSource &m_source;
    StatePublisher m_private;
    StatePublisher m_restricted;
};

} // namespace oz::services
