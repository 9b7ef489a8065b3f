#pragma once

#include "source/Source.hpp"

namespace oz::services {

struct SimCardState
{
    enum class Card { Missing, Incompatible, NotProvisioned, Unreadable, PinRequired, Ready };

    struct Network
    {
        QString countryCode; //!< three digits
        QString networkCode; //!< two or three digits

        bool operator==(const Network &) const = default;
    };

    std::optional<Card> card;
    //! These identify the card and its owner: they are for no log.
    std::optional<QString> serialNumber;
    std::optional<QString> subscriberIdentifier;
    std::optional<Network> homeNetwork;

    bool operator==(const SimCardState &) const = default;
};

/*! What the SIM card in the first slot is like, whoever knows it. */
using SimCardSource = StateSource<SimCardState>;

} // namespace oz::services
