#pragma once

#include "hardware/HardwareSource.hpp"
#include "miracast/MiracastSource.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*!
 * Publishes "/pps/services/private/deviceproperties" (the identifiers, for owner and group only),
 * "/pps/services/deviceproperties" (the names) and "/pps/services/hw_info/inventory" (the parts, and whether
 * the source of Miracast says that the device has it).
 */
class HardwarePublisher final : public PublisherOf<HardwareSource>
{
public:
    /*! Without a \a miracast, nothing is known of that. */
    HardwarePublisher(
        const QString &facility, HardwareSource &source, Tree &tree, const MiracastSource *miracast);

private:
    void publishState(const HardwareState &state) override;

    const MiracastSource *m_miracast;
    std::optional<bool> m_isMiracastSupported; // as it was told last: it is no matter of who runs
    StatePublisher m_identifiers;
    StatePublisher m_names;
    StatePublisher m_inventory;
};

} // namespace oz::services
