#pragma once

#include "facility/Facility.hpp"
#include "linux/ModemManager.hpp"

namespace oz::services {

/*! ModemManager, over the one connection to it that all sources share. */
[[nodiscard]] inline std::shared_ptr<ModemManager> modemManagerOf(Providers &providers)
{
    return providers.shared<ModemManager>(
        [&] { return std::make_shared<ModemManager>(providers.shared<SystemBus>()); });
}

/*! The sources, of the type \a SourceType, that ModemManager feeds. */
template <typename SourceType>
[[nodiscard]] SourceKind modemKind(const QString &help)
{
    return {QStringLiteral("modemmanager"), help, {QStringLiteral("modem")},
        [](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<SourceType>(
                modemManagerOf(providers), options.value(QStringLiteral("modem")));
        },
        noObstacle};
}

} // namespace oz::services
