#include "simcard/SimCardPublisher.hpp"

namespace oz::services {

namespace {

QString stateText(SimCardSource::Card card)
{
    switch (card) {
    case SimCardSource::Card::Absent:
        return QStringLiteral("NOT_DETECTED");
    case SimCardSource::Card::Incompatible:
        return QStringLiteral("INVALID_SIM");
    case SimCardSource::Card::NotProvisioned:
        return QStringLiteral("NOT_PROVISIONED");
    case SimCardSource::Card::Unreadable:
        return QStringLiteral("CARD_ERROR");
    case SimCardSource::Card::PinRequired:
        return QStringLiteral("CHV_REQUESTED");
    case SimCardSource::Card::Ready:
        return QStringLiteral("READY");
    }
    return {};
}

} // namespace

SimCardPublisher::SimCardPublisher(SimCardSource &source)
    : m_source(source), m_private(QStringLiteral("/pps/services/cellular/uicc/card0/status_private"), 0640),
      m_restricted(QStringLiteral("/pps/services/cellular/uicc/card0/status_restricted"), 0640)
{
    connect(&source, &SimCardSource::changed, this, &SimCardPublisher::publish);
    publish();
}

void SimCardPublisher::publish()
{
    const auto state = m_source.state();
    if (!state)
        return;
    QVariantMap card{
        {QStringLiteral("uicc_state"), QVariantMap{{QStringLiteral("state"), stateText(state->card)}}}};
    insertKnown(&card, QStringLiteral("iccid"), state->serialNumber);
    if (state->homeNetwork) {
        card.insert(QStringLiteral("hplmn"),
            QVariantMap{{QStringLiteral("mcc"), state->homeNetwork->countryCode},
                {QStringLiteral("mnc"), state->homeNetwork->networkCode}});
    }
    QVariantMap subscriber;
    insertKnown(&subscriber, QStringLiteral("imsi"), state->subscriberIdentifier);
    m_private.publish(card);
    m_restricted.publish(subscriber);
}

} // namespace oz::services
