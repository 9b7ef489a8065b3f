#pragma once

#include "facility/Facility.hpp"
#include "linux/ModemManager.hpp"

namespace oz::services {

/*! The sources, of the type \a SourceType, that ModemManager feeds, all of them over one connection to it. */
template <typename SourceType>
[[nodiscard]] SourceKind modemKind(const QString &help)
{
    return {QStringLiteral("modemmanager"), help, {QStringLiteral("modem")},
        [](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            const auto manager = providers.shared<ModemManager>(
                [&] { return std::make_shared<ModemManager>(providers.shared<SystemBus>()); });
            return std::make_shared<SourceType>(manager, options.value(QStringLiteral("modem")));
        },
        noObstacle};
}

} // namespace oz::services
