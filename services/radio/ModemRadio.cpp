#include "radio/ModemRadio.hpp"

#include "cellular/ModemAccess.hpp"

#include <QDBusArgument>

#include <utility>

namespace oz::services {

namespace {

// The technologies of a modem, by its capabilities and by the generations that it can be limited to.
QList<Technology> technologiesOf(uint capabilities, uint modes)
{
    QList<Technology> found;
    const auto add = [&](uint capability, uint mode, Technology technology) {
        if ((capabilities & capability) && (modes & mode))
            found.append(technology);
    };
    add(MM_MODEM_CAPABILITY_GSM_UMTS, MM_MODEM_MODE_2G | MM_MODEM_MODE_CS, Technology::Gsm);
    add(MM_MODEM_CAPABILITY_GSM_UMTS, MM_MODEM_MODE_3G, Technology::Umts);
    add(MM_MODEM_CAPABILITY_CDMA_EVDO, MM_MODEM_MODE_2G, Technology::Cdma1x);
    add(MM_MODEM_CAPABILITY_CDMA_EVDO, MM_MODEM_MODE_3G, Technology::Evdo);
    add(MM_MODEM_CAPABILITY_LTE, MM_MODEM_MODE_4G, Technology::Lte);
    return found;
}

Radio::Bands bandsOf(const QList<uint> &bands)
{
    static const QMap<uint, int> gsm{{MM_MODEM_BAND_EGSM, 900}, {MM_MODEM_BAND_DCS, 1800},
        {MM_MODEM_BAND_PCS, 1900}, {MM_MODEM_BAND_G850, 850}};
    static const QMap<uint, int> umts{{MM_MODEM_BAND_UTRAN_1, 1}, {MM_MODEM_BAND_UTRAN_2, 2},
        {MM_MODEM_BAND_UTRAN_3, 3}, {MM_MODEM_BAND_UTRAN_4, 4}, {MM_MODEM_BAND_UTRAN_5, 5},
        {MM_MODEM_BAND_UTRAN_6, 6}, {MM_MODEM_BAND_UTRAN_7, 7}, {MM_MODEM_BAND_UTRAN_8, 8},
        {MM_MODEM_BAND_UTRAN_9, 9}, {MM_MODEM_BAND_UTRAN_10, 10}};
    static const QMap<uint, int> cdma{
        {MM_MODEM_BAND_CDMA_BC0, 0}, {MM_MODEM_BAND_CDMA_BC1, 1}, {MM_MODEM_BAND_CDMA_BC15, 15}};
    Radio::Bands found;
    for (const uint band : bands) {
        if (gsm.contains(band))
            found.gsm.append(gsm[band]);
        else if (umts.contains(band))
            found.umts.append(umts[band]);
        else if (cdma.contains(band))
            found.cdma.append(cdma[band]);
        else if (band >= MM_MODEM_BAND_EUTRAN_1 && band <= MM_MODEM_BAND_EUTRAN_31)
            found.lte.append(int(band - MM_MODEM_BAND_EUTRAN_1) + 1);
    }
    return found;
}

} // namespace

void ModemRadio::readState()
{
    Radio state;
    switch (of(ModemInterface, "PowerState").toUInt()) {
    case MM_MODEM_POWER_STATE_ON:
        state.poweredOn = true;
        break;
    case MM_MODEM_POWER_STATE_LOW:
    case MM_MODEM_POWER_STATE_OFF:
        state.poweredOn = false;
        break;
    default:
        break;
    }
    uint capabilities = 0;
    for (const uint each : qdbus_cast<QList<uint>>(of(ModemInterface, "SupportedCapabilities")))
        capabilities |= each;
    uint modes = 0;
    const auto combinations = qdbus_cast<QList<std::pair<uint, uint>>>(of(ModemInterface, "SupportedModes"));
    for (const auto &[allowed, preferred] : combinations)
        modes |= allowed;
    if (capabilities) {
        state.technologies = technologiesOf(capabilities, modes);
        CellularServices services;
        services.setFlag(CellularService::Voice, manager().has(path(), VoiceInterface));
        services.setFlag(CellularService::Data);
        services.setFlag(CellularService::Umts, state.technologies->contains(Technology::Umts));
        services.setFlag(CellularService::Cdma, state.technologies->contains(Technology::Cdma1x));
        services.setFlag(CellularService::Lte, state.technologies->contains(Technology::Lte));
        state.services = services;
        const auto [allowed, preferred] =
            qdbus_cast<std::pair<uint, uint>>(of(ModemInterface, "CurrentModes"));
        state.enabledTechnologies = technologiesOf(capabilities, modes & allowed);
    }
    const auto bands = qdbus_cast<QList<uint>>(of(ModemInterface, "SupportedBands"));
    if (!bands.isEmpty() && bands != QList<uint>{MM_MODEM_BAND_UNKNOWN}
        && bands != QList<uint>{MM_MODEM_BAND_ANY})
        state.bands = bandsOf(bands);
    state.networks = isRegistered(of(Modem3gppInterface, "RegistrationState").toUInt())
        ? technologiesIn(of(ModemInterface, "AccessTechnologies").toUInt())
        : QList<Technology>();
    know(state);
}

} // namespace oz::services
