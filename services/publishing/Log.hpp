#pragma once

#include <QLoggingCategory>

namespace oz::services {

/*! The category of the daemon's own messages, "oz.deviced". */
Q_DECLARE_LOGGING_CATEGORY(logServices)

} // namespace oz::services
