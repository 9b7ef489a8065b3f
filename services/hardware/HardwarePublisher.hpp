#pragma once

#include "hardware/Hardware.hpp"
#include "publishing/FieldsPublisher.hpp"

namespace oz::services {

/*! Publishes the device's identifiers and names, and its parts with whether the source of Miracast says that
 * the device has it. */
class HardwarePublisher final : public FieldsPublisher<HardwareSource>
{
public:
    /*! Without a \a miracast, nothing is known of that. */
    HardwarePublisher(
        const QString &facility, HardwareSource &source, Tree &tree, const MiracastSupport *miracast);

private:
    void publishState(const Hardware &state) override;

    const MiracastSupport *m_miracast;
    std::optional<bool> m_isMiracastSupported; // as it was told last: it is no matter of who runs
    StatePublisher m_inventory;
};

} // namespace oz::services
