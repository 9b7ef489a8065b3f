#include "cellular-network/ModemNetworks.hpp"

#include "cellular/ModemAccess.hpp"

#include <QDBusArgument>

#include <utility>

namespace oz::services {

namespace {

bool isForeign(uint registrationState)
{
    return registrationState == MM_MODEM_3GPP_REGISTRATION_STATE_ROAMING
        || registrationState == MM_MODEM_3GPP_REGISTRATION_STATE_ROAMING_SMS_ONLY
        || registrationState == MM_MODEM_3GPP_REGISTRATION_STATE_ROAMING_CSFB_NOT_PREFERRED;
}

QString remarkOn(uint registrationState)
{
    switch (registrationState) {
    case MM_MODEM_3GPP_REGISTRATION_STATE_IDLE:
        return QStringLiteral("the modem is in no network and looks for none");
    case MM_MODEM_3GPP_REGISTRATION_STATE_SEARCHING:
        return QStringLiteral("the modem looks for a network");
    case MM_MODEM_3GPP_REGISTRATION_STATE_DENIED:
        return QStringLiteral("the network does not admit the SIM card");
    case MM_MODEM_3GPP_REGISTRATION_STATE_EMERGENCY_ONLY:
        return QStringLiteral("the network admits emergency calls only");
    default:
        return {};
    }
}

} // namespace

// The quality is the percentage of the scale of received signal strength, -113 to -51 dBm in steps of 2 (3GPP
// TS 27.007, +CSQ).
std::optional<int> ModemNetworks::signalStrength() const
{
    const auto [quality, isRecent] = qdbus_cast<std::pair<uint, bool>>(of(ModemInterface, "SignalQuality"));
    if (quality == 0)
        return std::nullopt; // nobody has measured it
    return -113 + 2 * qRound(int(quality) * 31 / 100.0);
}

void ModemNetworks::readState()
{
    CellularNetworks state;
    const uint registration = of(Modem3gppInterface, "RegistrationState").toUInt();
    const bool isEmergencyOnly = registration == MM_MODEM_3GPP_REGISTRATION_STATE_EMERGENCY_ONLY;
    if (isRegistered(registration) || isEmergencyOnly) {
        CellularNetworks::Network &network = state.primary.emplace(CellularNetworks::Network());
        CellularServices services;
        if (isRegistered(registration)) {
            services = servicesIn(of(ModemInterface, "AccessTechnologies").toUInt());
            services.setFlag(CellularService::Voice, manager().has(path(), VoiceInterface));
            network.roams = isForeign(registration);
        } else {
            services.setFlag(CellularService::Emergency);
        }
        network.services = services;
        if (const QString name = of(Modem3gppInterface, "OperatorName").toString(); !name.isEmpty())
            network.operatorName = network.displayName = name;
        if (const QString code = of(Modem3gppInterface, "OperatorCode").toString(); code.size() >= 5) {
            network.countryCode = code.first(3);
            network.networkCode = code.mid(3);
        }
        network.signalStrength = signalStrength();
    }
    setRemark(remarkOn(registration));
    know(state);
}

} // namespace oz::services
