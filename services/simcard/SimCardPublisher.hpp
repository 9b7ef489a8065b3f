#pragma once

#include "publishing/Publisher.hpp"
#include "simcard/SimCardSource.hpp"

namespace oz::services {

/*!
 * Publishes "status_private" ("uicc_state", "hplmn", "iccid") and "status_restricted" ("imsi") in
 * "/pps/services/cellular/uicc/card0/", both for owner and group only.
 */
class SimCardPublisher final : public PublisherOf<SimCardSource>
{
public:
    SimCardPublisher(const QString &facility, SimCardSource &source, Tree &tree);

private:
    void publishState(const SimCardState &state) override;

    StatePublisher m_private;
    StatePublisher m_restricted;
};

} // namespace oz::services
