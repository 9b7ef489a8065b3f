#pragma once

#include "facilities/FacilityTable.hpp"

#include <QJsonObject>

namespace oz::tools {

/*! Describes a facility: its class, and what the command adds to it. */
[[nodiscard]] QJsonObject describe(const FacilityEntry &entry);

/*! Prints the description as text. */
void printDescription(const FacilityEntry &entry);
/*! Prints the methods only: their parameters, enumerators and results. */
void printMethods(const FacilityEntry &entry);

} // namespace oz::tools
