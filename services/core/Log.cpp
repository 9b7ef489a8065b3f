#include "core/Log.hpp"

#include "core/Error.hpp"

namespace oz::services {

Q_LOGGING_CATEGORY(logServices, "oz.deviced")

void Startup::fail(const QString &problem)
{
    if (s_underWay)
        throw Error(problem);
    qCWarning(logServices).noquote() << problem;
}

} // namespace oz::services
