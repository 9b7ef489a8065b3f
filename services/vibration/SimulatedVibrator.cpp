#include "vibration/SimulatedVibrator.hpp"

namespace oz::services {

const Settings<SimulatedVibrator> &SimulatedVibrator::table()
{
    using C = SettingColumns<SimulatedVibrator>;
    static const Settings<SimulatedVibrator> table{
        {"present", C::truth(&SimulatedVibrator::m_present), true, "whether there is a motor",
            onOff("present", "puts the motor in, or takes it out")},
    };
    return table;
}

SimulatedVibrator::SimulatedVibrator(const JsonNode &section, SimulatedParts &)
{
    read(section, settings({}));
    update();
}

void SimulatedVibrator::update()
{
    save();
    know({m_present});
}

} // namespace oz::services
