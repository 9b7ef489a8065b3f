#pragma once

#include "facility/Facility.hpp"

namespace oz::services {

/*! The source "wireless-display" of Miracast: real sinks. */
[[nodiscard]] SourceKind wirelessDisplayKind();

} // namespace oz::services
