#pragma once

#include "facility/Facility.hpp"
#include "linux/SystemBus.hpp"

namespace oz::services {

/*! The source, of the type \a SourceType, that a service on the system's bus feeds; \a option, where there is
 * one, tells which of several things it is about. */
template <typename SourceType>
[[nodiscard]] SourceKind busKind(const QString &name, const QString &help, const QString &option = {})
{
    return {name, help, option.isEmpty() ? QStringList() : QStringList{option},
        [option](Providers &providers, const SourceOptions &options) -> std::shared_ptr<Source> {
            auto bus = providers.shared<SystemBus>();
            if constexpr (std::is_constructible_v<SourceType, std::shared_ptr<SystemBus>, QString>)
                return std::make_shared<SourceType>(std::move(bus), options.value(option));
            else
                return std::make_shared<SourceType>(std::move(bus));
        },
        noObstacle};
}

} // namespace oz::services
