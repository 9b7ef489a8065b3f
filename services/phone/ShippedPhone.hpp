#pragma once

#include "phone/JsonNode.hpp"

namespace oz::services {

/*! The map \a key of \a section, the section called \a name of a phone's file; where that has none, the one
 * of the phone's file as it is shipped. */
[[nodiscard]] JsonNode givenOrShipped(const JsonNode &section, const QString &name, const QString &key);

} // namespace oz::services
