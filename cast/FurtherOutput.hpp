#pragma once

#include "Screen.hpp"

namespace oz::cast {

/*!
 * Looks for a compositor that can make a further output, which extends the desktop: sway, to which SWAYSOCK
 * leads. The output is made when it is opened. False if there is none; then the remark says why.
 */
[[nodiscard]] bool findFurtherOutput(Screen *screen);

/*!
 * Removes the output that a cast of this session has made; without one, nothing happens. A sway that cannot
 * do so (before 1.9) is asked to switch it off, and keeps it for the next cast. It does not wait.
 */
void removeFurtherOutput();

} // namespace oz::cast
