#pragma once

#include "Screen.hpp"

namespace oz::cast {

/*!
 * Looks for the desktop portal of the session (org.freedesktop.portal.ScreenCast), which gives a screen by
 * PipeWire where the person in front of it allows that. It asks when the screen is opened. False if there is
 * none; then the remark says why.
 */
[[nodiscard]] bool findPortalScreen(Screen *screen);

} // namespace oz::cast
