#include "simcard/SimulatedSimCard.hpp"

#include "publishing/Error.hpp"

#include <QRegularExpression>

namespace oz::services {

namespace {

using Card = SimCardState::Card;

// What the phone's file calls a state, and the verb that leads there.
struct CardState
{
    Card card;
    QString word;
    QString verb;
    QString help;
};

const QList<CardState> &cardStates()
{
    static const QList<CardState> states{
        {Card::Missing, QStringLiteral("removed"), QStringLiteral("remove"),
            QStringLiteral("takes the card out")},
        {Card::Ready, QStringLiteral("ready"), QStringLiteral("ready"), QStringLiteral("makes it ready")},
        {Card::PinRequired, QStringLiteral("pin"), QStringLiteral("pin"),
            QStringLiteral("lets it wait for its PIN")},
        {Card::NotProvisioned, QStringLiteral("not-provisioned"), QStringLiteral("not-provisioned"),
            QStringLiteral("makes it one that is not provisioned")},
        {Card::Incompatible, QStringLiteral("incompatible"), QStringLiteral("incompatible"),
            QStringLiteral("makes it one that cannot be used here")},
        {Card::Unreadable, QStringLiteral("unreadable"), QStringLiteral("unreadable"),
            QStringLiteral("makes it one that cannot be read")},
    };
    return states;
}

// Checks digits without ever showing them.
std::optional<QString> digits(
    const JsonNode &section, const QString &key, const QString &fallback, int least, int most)
{
    auto value = section.identifier(key, fallback);
    static const QRegularExpression notDigit(QStringLiteral("[^0-9]"));
    if (value && (value->size() < least || value->size() > most || value->contains(notDigit))) {
        const QString count = least == most
            ? QString::number(least)
            : QString(QString::number(least) + QLatin1String(" to ") + QString::number(most));
        section.fail(QLatin1String("expected ") + count + QLatin1String(" digits"), key);
    }
    return value;
}

} // namespace

SimulatedSimCard::SimulatedSimCard(const JsonNode &section, SimulatedPhone &)
{
    section.allowOnly({QStringLiteral("state"), QStringLiteral("mcc"), QStringLiteral("mnc"),
        QStringLiteral("iccid"), QStringLiteral("imsi")});
    QStringList words;
    for (const CardState &state : cardStates())
        words.append(state.word);
    const QString word = section.word(QStringLiteral("state"), QStringLiteral("ready"), words);
    m_card = cardStates()[words.indexOf(word)].card;
    const auto mcc = digits(section, QStringLiteral("mcc"), QStringLiteral("001"), 3, 3);
    const auto mnc = digits(section, QStringLiteral("mnc"), QStringLiteral("01"), 2, 3);
    if (mcc && mnc)
        m_held.homeNetwork = {*mcc, *mnc};
    m_held.serialNumber =
        digits(section, QStringLiteral("iccid"), QStringLiteral("8900100000000000001"), 18, 20);
    m_held.subscriberIdentifier =
        digits(section, QStringLiteral("imsi"), QStringLiteral("001010000000001"), 6, 15);
    become(m_card);
}

std::vector<SimVerb> SimulatedSimCard::verbs(const QString &)
{
    std::vector<SimVerb> verbs{SimVerb::state(
        QStringLiteral("insert"), QStringLiteral("inserts the card, ready"), [this] { become(Card::Ready); },
        [this] { return m_card != Card::Missing; })};
    for (const CardState &state : cardStates()) {
        verbs.push_back(SimVerb::state(
            state.verb, state.help,
            [this, card = state.card] {
                if (m_card == Card::Missing && card != Card::Missing)
                    throw Error(QStringLiteral("no card is inserted"));
                become(card);
            },
            [this, card = state.card] { return m_card == card; }));
    }
    return verbs;
}

QVariantMap SimulatedSimCard::saved() const
{
    return {{QStringLiteral("card"), int(m_card)}};
}

void SimulatedSimCard::restore(const QVariantMap &saved)
{
    become(Card(std::clamp(saved.value(QStringLiteral("card")).toInt(), 0, int(Card::Ready))));
}

// What can be read of it depends on its state.
void SimulatedSimCard::become(Card card)
{
    m_card = card;
    SimCardState readable;
    readable.card = card;
    if (card != Card::Missing && card != Card::Unreadable)
        readable.serialNumber = m_held.serialNumber;
    if (card == Card::Ready || card == Card::NotProvisioned) {
        readable.subscriberIdentifier = m_held.subscriberIdentifier;
        readable.homeNetwork = m_held.homeNetwork;
    }
    save();
    know(readable);
}

} // namespace oz::services
