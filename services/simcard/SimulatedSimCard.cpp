#include "simcard/SimulatedSimCard.hpp"

namespace oz::services {

const Settings<SimulatedSimCard> &SimulatedSimCard::table()
{
    using S = SimulatedSimCard;
    using C = SettingColumns<SimulatedSimCard>;
    static const auto held = [](auto member) {
        return [member](auto &part) -> auto &
        {
            return part.m_held.*member;
        };
    };
    static const Settings<SimulatedSimCard> table{
        {"state", C::words(&S::m_card, simCardStates()), QStringLiteral("ready"),
            "the state of the card; pin while it waits for its PIN",
            eachWord({
                {"insert", "inserts the card, ready", "ready"},
                {"remove", "takes the card out", "removed"},
                {"ready", "makes it ready"},
                {"pin", "makes it wait for its PIN"},
                {"not-provisioned", "makes it one that is not provisioned"},
                {"incompatible", "makes it one that cannot be used here"},
                {"unreadable", "makes it one that cannot be read"},
            }),
            {"state"}},
        {"mcc", C::text(held(&SimCard::countryCode), "[0-9]{3}", "3 digits"), QStringLiteral("001"),
            "the country code of its home network", {}, {"mcc"}},
        {"mnc", C::text(held(&SimCard::networkCode), "[0-9]{2,3}", "2 to 3 digits"), QStringLiteral("01"),
            "the network code of its home network", {}, {"mnc"}},
        {"iccid", C::text(held(&SimCard::serialNumber), "[0-9]{18,20}", "18 to 20 digits").asPrivate(),
            QStringLiteral("8900100000000000001"), "the card's serial number", {},
            {.field = "iccid", .keptDigits = 2}},
        {"imsi", C::text(held(&SimCard::subscriberIdentifier), "[0-9]{6,15}", "6 to 15 digits").asPrivate(),
            QStringLiteral("001010000000001"), "the subscriber's identity", {},
            {.field = "imsi", .keptDigits = 3}},
    };
    return table;
}

SimulatedSimCard::SimulatedSimCard(const JsonNode &section, SimulatedParts &)
{
    read(section, settings({}));
    update();
}

void SimulatedSimCard::update()
{
    SimCard readable;
    readable.state = m_card;
    if (m_card != SimCard::State::Missing && m_card != SimCard::State::Unreadable)
        readable.serialNumber = m_held.serialNumber;
    if (m_card == SimCard::State::Ready || m_card == SimCard::State::NotProvisioned) {
        readable.subscriberIdentifier = m_held.subscriberIdentifier;
        if (m_held.countryCode && m_held.networkCode) {
            readable.countryCode = m_held.countryCode;
            readable.networkCode = m_held.networkCode;
        }
    }
    save();
    know(readable);
}

} // namespace oz::services
