#include "vibration/SimulatedVibrator.hpp"

namespace oz::services {

namespace {
const QString Present = QStringLiteral("present");
}

SimulatedVibrator::SimulatedVibrator(const JsonNode &section, SimulatedPhone &)
    : m_present(section.boolean(Present, true))
{
    section.allowOnly({Present});
    become(m_present);
}

std::vector<SimVerb> SimulatedVibrator::verbs(const QString &)
{
    return {SimVerb::onOff(
        Present, QStringLiteral("takes the motor out, or puts it in"), [this](bool on) { become(on); },
        [this] { return m_present; })};
}

QVariantMap SimulatedVibrator::saved() const
{
    return {{Present, m_present}};
}

void SimulatedVibrator::restore(const QVariantMap &saved)
{
    become(saved.value(Present).toBool());
}

void SimulatedVibrator::become(bool present)
{
    m_present = present;
    save();
    know({present});
}

} // namespace oz::services
