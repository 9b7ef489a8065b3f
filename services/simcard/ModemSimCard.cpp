#include "simcard/ModemSimCard.hpp"

#include <QDBusArgument>

namespace oz::services {

namespace {

using Card = SimCard::State;

// A modem that has failed says what is wrong with the card, else the card's lock tells.
std::optional<Card> cardOf(bool isThere, int state, uint failure, uint lock)
{
    if (state == MM_MODEM_STATE_FAILED) {
        switch (failure) {
        case MM_MODEM_STATE_FAILED_REASON_SIM_MISSING:
            return Card::Missing;
        case MM_MODEM_STATE_FAILED_REASON_SIM_ERROR:
            return Card::Unreadable;
        case MM_MODEM_STATE_FAILED_REASON_ESIM_WITHOUT_PROFILES:
            return Card::NotProvisioned;
        default:
            return std::nullopt;
        }
    }
    if (!isThere)
        return Card::Missing;
    switch (lock) {
    case MM_MODEM_LOCK_UNKNOWN:
        return std::nullopt;
    case MM_MODEM_LOCK_NONE:
    case MM_MODEM_LOCK_SIM_PIN2: // for settings of the card, not for its use
    case MM_MODEM_LOCK_SIM_PUK2:
        return Card::Ready;
    case MM_MODEM_LOCK_SIM_PIN:
    case MM_MODEM_LOCK_SIM_PUK: // it has to be given a new PIN
        return Card::PinRequired;
    default:
        return Card::Incompatible; // the device is locked to other cards
    }
}

// Tells the person what to do, without any of the card's own data.
QString remarkOn(uint lock, const QMap<uint, uint> &tries)
{
    const auto wants = [&](const char *what) -> QString {
        return QLatin1String("the SIM card wants its ") + QLatin1String(what)
            + (tries.contains(lock) ? QString(
                   QLatin1String(": ") + QString::number(tries[lock]) + QLatin1String(" tries are left"))
                                    : QString())
            + QLatin1String(" (mmcli --sim=any)");
    };
    switch (lock) {
    case MM_MODEM_LOCK_SIM_PIN:
        return wants("PIN");
    case MM_MODEM_LOCK_SIM_PUK:
        return wants("PUK and a new PIN");
    default:
        return {};
    }
}

} // namespace

void ModemSimCard::readState()
{
    const QString card = of(ModemInterface, "Sim").value<QDBusObjectPath>().path();
    const bool isThere = card.size() > 1;
    const auto text = [&](const char *name) -> std::optional<QString> {
        const QString value = manager().property(card, CardInterface, QLatin1String(name)).toString();
        return value.isEmpty() ? std::nullopt : std::optional(value);
    };
    SimCard state;
    state.state = cardOf(isThere, of(ModemInterface, "State").toInt(),
        of(ModemInterface, "StateFailedReason").toUInt(), of(ModemInterface, "UnlockRequired").toUInt());
    if (isThere) {
        state.serialNumber = text("SimIdentifier");
        state.subscriberIdentifier = text("Imsi");
        if (const auto network = text("OperatorIdentifier"); network && network->size() >= 5) {
            state.countryCode = network->first(3);
            state.networkCode = network->mid(3);
        }
    }
    const uint lock = of(ModemInterface, "UnlockRequired").toUInt();
    setRemark(remarkOn(lock, qdbus_cast<QMap<uint, uint>>(of(ModemInterface, "UnlockRetries"))));
    know(state);
}

} // namespace oz::services
