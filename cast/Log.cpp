#include "Log.hpp"

namespace oz::cast {

Q_LOGGING_CATEGORY(logCast, "oz.cast")

} // namespace oz::cast
