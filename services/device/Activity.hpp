#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

#include <QMap>

namespace oz::services {

/*! The power manager's status for whether somebody uses the device. */
inline const QString UserActivity = QStringLiteral("user_activity");

/*! The user's activity, as any source knows it. */
struct Activity
{
    std::optional<bool> isUsed; //!< whether somebody uses the device
    QMap<QString, QString> others; //!< further statuses, texts without line feeds

    bool operator==(const Activity &) const = default;
};

using ActivitySource = StateSource<Activity>;

[[nodiscard]] const WordList<bool> &activityWords();
/*! How it is told: the statuses of the power manager, of which "user_activity" is always there. */
[[nodiscard]] const Fields<Activity> &activityFields();

} // namespace oz::services
