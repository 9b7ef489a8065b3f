#pragma once

#include "phone/JsonNode.hpp"

namespace oz::services {

/*! A section of the phone's file as it is shipped, for what is too large to stand in the code too. */
[[nodiscard]] JsonNode shippedSection(const QString &name);

} // namespace oz::services
