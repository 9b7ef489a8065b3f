#include "led/SimulatedLed.hpp"

namespace oz::services {

SimulatedLed::SimulatedLed(const JsonNode &section, SimulatedPhone &)
{
    const QString on = QStringLiteral("on-seconds");
    const QString off = QStringLiteral("off-seconds");
    section.allowOnly({on, off});
    m_state.flashTime = section.seconds(on, 0.25, 0.001, 60);
    m_state.darkTime = section.seconds(off, 0.25, 0.001, 60);
    know(m_state);
}

void SimulatedLed::light(const LedState::Elements &elements, const Done &done)
{
    m_state.lit = elements;
    know(m_state);
    done({});
}

} // namespace oz::services
