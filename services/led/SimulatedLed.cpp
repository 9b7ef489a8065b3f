#include "led/SimulatedLed.hpp"

namespace oz::services {

SimulatedLed::SimulatedLed(const JsonNode &section)
{
    const QString on = QStringLiteral("on-seconds");
    const QString off = QStringLiteral("off-seconds");
    section.allowOnly({on, off});
    const auto time = [&](const QString &key) {
        return std::chrono::milliseconds(qRound(section.number(key, 0.25, 0.001, 60) * 1000));
    };
    m_flash = {time(on), time(off)};
}

void SimulatedLed::light(const Elements &elements)
{
    if (elements == m_lit)
        return;
    m_lit = elements;
    Q_EMIT changed();
}

} // namespace oz::services
