#include "vibration/SimulatedVibrator.hpp"

namespace oz::services {

SimulatedVibrator::SimulatedVibrator(const JsonNode &section)
    : m_present(section.boolean(QStringLiteral("present"), true))
{
    section.allowOnly({QStringLiteral("present")});
}

std::vector<SimVerb> SimulatedVibrator::verbs(const QString &)
{
    return {SimVerb::onOff(
        QStringLiteral("present"), QStringLiteral("takes the motor out, or puts it in"), [this](bool on) {
            m_present = on;
            Q_EMIT presentChanged();
        })};
}

} // namespace oz::services
