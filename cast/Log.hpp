#pragma once

#include <QLoggingCategory>

namespace oz::cast {

/*! The category of the program's messages, "oz.cast". */
Q_DECLARE_LOGGING_CATEGORY(logCast)

} // namespace oz::cast
