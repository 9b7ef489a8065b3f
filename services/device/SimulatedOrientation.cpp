#include "device/SimulatedOrientation.hpp"

namespace oz::services {

const Settings<SimulatedOrientation> &SimulatedOrientation::table()
{
    using C = SettingColumns<SimulatedOrientation>;
    static const Settings<SimulatedOrientation> table{
        {"orientation", C::words(&SimulatedOrientation::m_orientation, orientationWords()),
            QStringLiteral("top-up"), "how the phone is held",
            eachWord({
                {"top-up", "holds the phone top-up"},
                {"bottom-up", "holds the phone bottom-up"},
                {"left-up", "holds the phone left-up"},
                {"right-up", "holds the phone right-up"},
                {"face-up", "holds the phone face-up"},
                {"face-down", "holds the phone face-down"},
                {"undefined", "holds the phone so that its sensor cannot tell how"},
            }),
            {"orientation"}},
    };
    return table;
}

SimulatedOrientation::SimulatedOrientation(const JsonNode &section, SimulatedParts &)
{
    read(section, settings({}));
    update();
}

void SimulatedOrientation::update()
{
    save();
    know({m_orientation});
}

} // namespace oz::services
