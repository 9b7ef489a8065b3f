#pragma once

#include "facilities/FacilityTable.hpp"

#include <QJsonObject>

namespace oz::tools {

/*! Everything about a facility's class, and about what the command knows of it. */
[[nodiscard]] QJsonObject describe(const FacilityEntry &entry);

/*! Prints the same for people. */
void printDescription(const FacilityEntry &entry);
/*! Prints the methods alone: their parameters, enumerators, and what they return. */
void printMethods(const FacilityEntry &entry);

} // namespace oz::tools
