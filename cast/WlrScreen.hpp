#pragma once

#include "Screen.hpp"

namespace oz::cast {

/*!
 * Looks at the Wayland compositor of the session, and takes its first output by wlr-screencopy. False if it
 * has no screen to cast that way; then the remark says why.
 */
[[nodiscard]] bool findWlrScreen(Screen *screen);
/*! As findWlrScreen(), with the output of that name. */
[[nodiscard]] bool findWlrOutput(Screen *screen, const QString &output);

} // namespace oz::cast
