#include "led/SimulatedLed.hpp"

namespace oz::services {

const Settings<SimulatedLed> &SimulatedLed::table()
{
    using C = SettingColumns<SimulatedLed>;
    static const auto of = [](auto member) {
        return [member](auto &part) -> auto &
        {
            return part.m_state.*member;
        };
    };
    static const Settings<SimulatedLed> table{
        {"on-seconds", C::seconds(of(&LedState::flashTime), 0.001, 60), 0.25, "how long a flash lasts"},
        {"off-seconds", C::seconds(of(&LedState::darkTime), 0.001, 60), 0.25,
            "how long the LED is dark between two flashes"},
    };
    return table;
}

SimulatedLed::SimulatedLed(const JsonNode &section, SimulatedParts &)
{
    read(section, settings({}));
    know(m_state);
}

void SimulatedLed::light(const LedState::Elements &elements, const Done &done)
{
    m_state.lit = elements;
    know(m_state);
    done({});
}

} // namespace oz::services
