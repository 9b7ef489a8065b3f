#include "publishing/Log.hpp"

namespace oz::services {

Q_LOGGING_CATEGORY(logServices, "oz.deviced")

} // namespace oz::services
