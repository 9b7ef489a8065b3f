#pragma once

#include "device/OrientationSource.hpp"
#include "phone/SimulatedPhone.hpp"

namespace oz::services {

/*! How the phone is held: the section "orientation" with "orientation". Each orientation is a verb. */
class SimulatedOrientation final : public OrientationSource, public SimulatedPart
{
public:
    SimulatedOrientation(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

private:
    void become(Orientation orientation);

    Orientation m_orientation;
};

} // namespace oz::services
