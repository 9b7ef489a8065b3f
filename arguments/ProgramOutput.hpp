#pragma once

#include <QString>

namespace oz::arguments {

/*! Has the log written as it can be shown: its texts may come from strangers, such as the name of a display,
 * and from files that anybody wrote. */
void logPrintably();

/*! Prints \a problem of a command line on standard error, and returns the exit status for wrong use. */
[[nodiscard]] int reportWrongUse(const QString &problem);

} // namespace oz::arguments
