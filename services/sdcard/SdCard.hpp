#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

namespace oz::services {

/*! The slot for an SD card and the card in it, as any source knows them. */
struct SdCard
{
    std::optional<bool> mounted;
    std::optional<bool> busy; //!< being read or written

    bool operator==(const SdCard &) const = default;
};

using SdCardSource = StateSource<SdCard>;

/*! How it stands in the tree. */
[[nodiscard]] const Fields<SdCard> &sdCardFields();

} // namespace oz::services
