#pragma once

#include <QLoggingCategory>

namespace oz::device {

/*! The category of every warning of the library, "oz.device". */
Q_DECLARE_LOGGING_CATEGORY(logDevice)

} // namespace oz::device
