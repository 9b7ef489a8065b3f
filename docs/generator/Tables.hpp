#pragma once

#include "facility/Facility.hpp"

#include <QString>
#include <QStringList>

namespace oz::pages {

/*! The values that \a type accepts: "0 to 100 %", "ok, bad, unknown", "text or null". */
[[nodiscard]] QString accepted(const services::ValueType &type);

/*! \a value as JSON has it. */
[[nodiscard]] QString jsonText(const QVariant &value);

/*!
 * The lines of the region called \a name: "values" and "requests" are all that scenarios know; "fields
 * FACILITY" is what a facility publishes, and "settings FACILITY" what its part of the simulated phone can be
 * told. Throws Error for any other name.
 */
[[nodiscard]] QStringList tablesFor(const QString &name);

/*! The regions that the pages have to show. */
[[nodiscard]] QStringList regionNames();

/*! The rows of the tables that have no help: "battery: the setting level". */
[[nodiscard]] QStringList rowsWithoutHelp();

} // namespace oz::pages
