#include "led/SimulatedLed.hpp"

namespace oz::services {

SimulatedLed::SimulatedLed(const JsonNode &section)
{
    const QString on = QStringLiteral("on-seconds");
    const QString off = QStringLiteral("off-seconds");
    section.allowOnly({on, off});
    m_flash = {section.seconds(on, 0.25, 0.001, 60), section.seconds(off, 0.25, 0.001, 60)};
}

void SimulatedLed::light(const Elements &elements)
{
    if (elements == m_lit)
        return;
    m_lit = elements;
    Q_EMIT changed();
}

} // namespace oz::services
