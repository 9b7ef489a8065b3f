#pragma once

#include <QLoggingCategory>

namespace oz {

/*! The category of the few warnings that the platform logs itself, "oz.support". */
Q_DECLARE_LOGGING_CATEGORY(logSupport)

} // namespace oz
