#include "SimCardInfoPrivate.hpp"

#include "NamedValue.hpp"
#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

namespace {

using Values = SimCardInfoPrivate::Values;

const QString PrivatePpsPath = QStringLiteral("/pps/services/cellular/uicc/card0/status_private");
const QString RestrictedPpsPath = QStringLiteral("/pps/services/cellular/uicc/card0/status_restricted");

constexpr LogText PrivateOpenFailed{
    "SimCardInfo - failed to open private PPS object: ", LogText::ErrorString};
constexpr ReadTexts PrivateReading{{"SimCardInfo - failed to read private PPS data: ", LogText::ErrorString},
    {"SimCardInfo - failed to decode private PPS data"}};
constexpr LogText RestrictedOpenFailed{
    "SimCardInfo - failed to open restricted PPS object: ", LogText::ErrorString};
constexpr ReadTexts RestrictedReading{
    {"SimCardInfo - failed to read restricted PPS data: ", LogText::ErrorString},
    {"SimCardInfo - failed to decode restricted PPS data"}};

constexpr NamedValue<SimCardState::Type> States[] = {
    {"INVALID_SIM", SimCardState::Incompatible},
    {"NOT_PROVISIONED", SimCardState::NotProvisioned},
    {"CARD_ERROR", SimCardState::ReadError},
    {"CHV_REQUESTED", SimCardState::PinRequired},
    {"READY", SimCardState::Ready},
};

using Changes =
    ChangeTable<Change<Fields<&Values::state>, qOverload<SimCardState::Type>(&SimCardInfo::stateChanged),
                    qOverload<int>(&SimCardInfo::stateChanged)>,
        Change<Fields<&Values::mobileCountryCode>, &SimCardInfo::mobileCountryCodeChanged>,
        Change<Fields<&Values::mobileNetworkCode>, &SimCardInfo::mobileNetworkCodeChanged>,
        Change<Fields<&Values::serialNumber>, &SimCardInfo::serialNumberChanged>,
        Change<Fields<&Values::subscriberIdentifier>, &SimCardInfo::subscriberIdentifierChanged>>;

} // namespace

SimCardInfoPrivate::SimCardInfoPrivate(SimCardInfo *publicObject)
    : QObject(publicObject), q(publicObject), m_privateObject(new PpsObject(PrivatePpsPath, this)),
      m_restrictedObject(new PpsObject(RestrictedPpsPath, this))
{
    if (openOrLog(m_privateObject, PpsOpenMode::Subscribe, PrivateOpenFailed)) {
        m_values.begin({readPrivateState(), {}});
        connect(m_privateObject, &PpsObject::readyRead, this, &SimCardInfoPrivate::updatePrivateState);
    }
    if (openOrLog(m_restrictedObject, PpsOpenMode::Subscribe, RestrictedOpenFailed)) {
        m_values.begin({*m_values, readRestrictedState()});
        connect(m_restrictedObject, &PpsObject::readyRead, this, &SimCardInfoPrivate::updateRestrictedState);
    }
}

void SimCardInfoPrivate::updatePrivateState()
{
    Changes::storeAndEmit(q, &m_values, Values{readPrivateState(), m_values->subscriberIdentifier});
}

void SimCardInfoPrivate::updateRestrictedState()
{
    Changes::storeAndEmit(q, &m_values, Values{*m_values, readRestrictedState()});
}

SimCardInfoPrivate::PrivateState SimCardInfoPrivate::readPrivateState()
{
    const QVariantMap card = attributesOrLog(m_privateObject, PrivateReading);
    const auto text = [&card](const QString &attribute, const QString &member) {
        return memberOf(card, attribute, member).toString();
    };
    return {
        .state = valueNamed(States, text(QStringLiteral("uicc_state"), QStringLiteral("state")))
                     .value_or(SimCardState::NotDetected),
        .mobileCountryCode = text(QStringLiteral("hplmn"), QStringLiteral("mcc")),
        .mobileNetworkCode = text(QStringLiteral("hplmn"), QStringLiteral("mnc")),
        .serialNumber = card.value(QStringLiteral("iccid")).toString(),
    };
}

QString SimCardInfoPrivate::readRestrictedState()
{
    return attributesOrLog(m_restrictedObject, RestrictedReading).value(QStringLiteral("imsi")).toString();
}

} // namespace oz::device
