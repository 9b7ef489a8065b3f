#include "simcard/SimCard.hpp"

namespace oz::services {

const WordList<SimCard::State> &simCardStates()
{
    static const WordList<SimCard::State> words{
        {SimCard::State::Missing, "NOT_DETECTED", "removed"},
        {SimCard::State::Ready, "READY", "ready"},
        {SimCard::State::PinRequired, "CHV_REQUESTED", "pin"},
        {SimCard::State::NotProvisioned, "NOT_PROVISIONED", "not-provisioned"},
        {SimCard::State::Incompatible, "INVALID_SIM", "incompatible"},
        {SimCard::State::Unreadable, "CARD_ERROR", "unreadable"},
    };
    return words;
}

const Fields<SimCard> &simCardFields()
{
    using S = SimCard;
    using C = Columns<SimCard>;
    static const Fields<SimCard> fields(QStringLiteral("/pps/services/cellular/uicc/card0/status_private"),
        {
            {"state", "uicc_state/state", C::words(&S::state, simCardStates()),
                "the state of the card; pin while it waits for its PIN"},
            {"iccid", "iccid", C::text(&S::serialNumber).asPrivate(), "the card's serial number"},
            {"mcc", "hplmn/mcc", C::text(&S::countryCode), "the country code of its home network"},
            {"mnc", "hplmn/mnc", C::text(&S::networkCode), "the network code of its home network"},
        },
        0640);
    return fields;
}

const Fields<SimCard> &subscriberFields()
{
    using C = Columns<SimCard>;
    static const Fields<SimCard> fields(QStringLiteral("/pps/services/cellular/uicc/card0/status_restricted"),
        {
            {"imsi", "imsi", C::text(&SimCard::subscriberIdentifier).asPrivate(),
                "the subscriber's identity"},
        },
        0640);
    return fields;
}

} // namespace oz::services
