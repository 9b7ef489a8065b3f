#pragma once

#include "source/Source.hpp"

#include <QMap>

namespace oz::services {

/*! The power manager's status, and the phone's word, for whether somebody uses the device. */
inline const QString UserActivity = QStringLiteral("user_activity");

struct ActivityState
{
    std::optional<bool> isUsed; //!< whether somebody uses the device
    QMap<QString, QString> others; //!< further statuses of the power manager, texts without line feeds

    bool operator==(const ActivityState &) const = default;
};

/*! Whether the device is used, whoever knows it. */
using ActivitySource = StateSource<ActivityState>;

} // namespace oz::services
