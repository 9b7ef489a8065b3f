#pragma once

#include "source/Source.hpp"

namespace oz::services {

/*! How the device is held: which of its sides is up. */
enum class Orientation {
    TopUp,
    BottomUp,
    LeftUp,
    RightUp,
    FaceUp,
    FaceDown,
    Undefined, //!< it cannot be told
};

/*! How the device is held, whoever knows it. */
using OrientationSource = StateSource<Orientation>;

} // namespace oz::services
