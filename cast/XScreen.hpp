#pragma once

#include "Screen.hpp"

namespace oz::cast {

/*! Looks at the X server that DISPLAY names. False if it has no screen to cast; then the remark says why. */
[[nodiscard]] bool findXScreen(Screen *screen);

} // namespace oz::cast
