#include "simcard/SimCardPublisher.hpp"

namespace oz::services {

namespace {

using Card = SimCardState::Card;

QString textOf(Card card)
{
    switch (card) {
    case Card::Missing:
        return QStringLiteral("NOT_DETECTED");
    case Card::Incompatible:
        return QStringLiteral("INVALID_SIM");
    case Card::NotProvisioned:
        return QStringLiteral("NOT_PROVISIONED");
    case Card::Unreadable:
        return QStringLiteral("CARD_ERROR");
    case Card::PinRequired:
        return QStringLiteral("CHV_REQUESTED");
    case Card::Ready:
        return QStringLiteral("READY");
    }
    return {};
}

} // namespace

SimCardPublisher::SimCardPublisher(const QString &facility, SimCardSource &source, Tree &tree)
    : PublisherOf(facility, source, tree),
      m_private(tree, QStringLiteral("/pps/services/cellular/uicc/card0/status_private"), 0640),
      m_restricted(tree, QStringLiteral("/pps/services/cellular/uicc/card0/status_restricted"), 0640)
{
    declare(m_private);
    declare(m_restricted);
    follow();
}

void SimCardPublisher::publishState(const SimCardState &state)
{
    QVariantMap card;
    if (state.card)
        card.insert(
            QStringLiteral("uicc_state"), QVariantMap{{QStringLiteral("state"), textOf(*state.card)}});
    insertKnown(&card, QStringLiteral("iccid"), state.serialNumber);
    if (state.homeNetwork) {
        card.insert(QStringLiteral("hplmn"),
            QVariantMap{{QStringLiteral("mcc"), state.homeNetwork->countryCode},
                {QStringLiteral("mnc"), state.homeNetwork->networkCode}});
    }
    QVariantMap subscriber;
    insertKnown(&subscriber, QStringLiteral("imsi"), state.subscriberIdentifier);
    m_private.publish(card);
    m_restricted.publish(subscriber);
}

} // namespace oz::services
