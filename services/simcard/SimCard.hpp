#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

namespace oz::services {

/*! The SIM card in the first slot, as any source knows it. */
struct SimCard
{
    enum class State { Missing, Incompatible, NotProvisioned, Unreadable, PinRequired, Ready };

    std::optional<State> state;
    //! These identify the card and its owner: they are for no log.
    std::optional<QString> serialNumber;
    std::optional<QString> subscriberIdentifier;
    //! The home network.
    std::optional<QString> countryCode; //!< three digits
    std::optional<QString> networkCode; //!< two or three digits

    bool operator==(const SimCard &) const = default;
};

using SimCardSource = StateSource<SimCard>;

[[nodiscard]] const WordList<SimCard::State> &simCardStates();
/*! How it stands in the tree: for its owner, and for who may know the subscriber. */
[[nodiscard]] const Fields<SimCard> &simCardFields();
[[nodiscard]] const Fields<SimCard> &subscriberFields();

} // namespace oz::services
