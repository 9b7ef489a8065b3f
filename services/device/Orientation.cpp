#include "device/Orientation.hpp"

namespace oz::services {

const WordList<Orientation> &orientationWords()
{
    static const WordList<Orientation> words{
        {Orientation::TopUp, "top-up", "top-up"},
        {Orientation::BottomUp, "bottom-up", "bottom-up"},
        {Orientation::LeftUp, "left-up", "left-up"},
        {Orientation::RightUp, "right-up", "right-up"},
        {Orientation::FaceUp, "face-up", "face-up"},
        {Orientation::FaceDown, "face-down", "face-down"},
        {Orientation::Undefined, "undefined", "undefined"},
    };
    return words;
}

const Fields<OrientationState> &orientationFields()
{
    using C = Columns<OrientationState>;
    static const Fields<OrientationState> fields(QStringLiteral("/pps/services/sensors/orientation"),
        {
            {"orientation", "orientation", C::words(&OrientationState::orientation, orientationWords()),
                "how the phone is held"},
        });
    return fields;
}

} // namespace oz::services
