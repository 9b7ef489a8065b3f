#pragma once

#include "core/SimulatedPhone.hpp"
#include "orientation/OrientationSource.hpp"

namespace oz::services {

/*! How the phone is held: the section "orientation" with "orientation". Each orientation is a verb. */
class SimulatedOrientation final : public OrientationSource, public SimulatedPart
{
public:
    explicit SimulatedOrientation(const JsonNode &section);

    [[nodiscard]] std::optional<QString> orientation() const override { return m_orientation; }
    [[nodiscard]] QString name() const override { return QStringLiteral("orientation"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

private:
    QString m_orientation;
};

} // namespace oz::services
