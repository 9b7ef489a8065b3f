#pragma once

#include "source/Source.hpp"

namespace oz::services {

struct SdCardState
{
    std::optional<bool> mounted;
    std::optional<bool> busy; //!< being read or written

    bool operator==(const SdCardState &) const = default;
};

/*! What the removable SD card is like, whoever knows it. */
using SdCardSource = StateSource<SdCardState>;

} // namespace oz::services
