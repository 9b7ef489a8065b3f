#include "cellular/ModemAccess.hpp"

#include <ModemManager.h>

namespace oz::services {

namespace {

constexpr uint EvdoAccess =
    MM_MODEM_ACCESS_TECHNOLOGY_EVDO0 | MM_MODEM_ACCESS_TECHNOLOGY_EVDOA | MM_MODEM_ACCESS_TECHNOLOGY_EVDOB;
constexpr uint GsmAccess = MM_MODEM_ACCESS_TECHNOLOGY_GSM | MM_MODEM_ACCESS_TECHNOLOGY_GSM_COMPACT
    | MM_MODEM_ACCESS_TECHNOLOGY_GPRS | MM_MODEM_ACCESS_TECHNOLOGY_EDGE;
constexpr uint HspaAccess =
    MM_MODEM_ACCESS_TECHNOLOGY_HSDPA | MM_MODEM_ACCESS_TECHNOLOGY_HSUPA | MM_MODEM_ACCESS_TECHNOLOGY_HSPA;
constexpr uint UmtsAccess =
    MM_MODEM_ACCESS_TECHNOLOGY_UMTS | HspaAccess | MM_MODEM_ACCESS_TECHNOLOGY_HSPA_PLUS;

constexpr struct
{
    uint access;
    Technology technology;
} Technologies[] = {
    {GsmAccess, Technology::Gsm},
    {UmtsAccess, Technology::Umts},
    {MM_MODEM_ACCESS_TECHNOLOGY_1XRTT, Technology::Cdma1x},
    {EvdoAccess, Technology::Evdo},
    {MM_MODEM_ACCESS_TECHNOLOGY_LTE, Technology::Lte},
};

constexpr struct
{
    uint access;
    CellularService service;
} ModemServices[] = {
    {MM_MODEM_ACCESS_TECHNOLOGY_GPRS, CellularService::Gprs},
    {MM_MODEM_ACCESS_TECHNOLOGY_EDGE, CellularService::Edge},
    {MM_MODEM_ACCESS_TECHNOLOGY_UMTS, CellularService::Umts},
    {HspaAccess, CellularService::Hspa},
    {MM_MODEM_ACCESS_TECHNOLOGY_HSPA_PLUS, CellularService::HspaPlus},
    {MM_MODEM_ACCESS_TECHNOLOGY_1XRTT, CellularService::Cdma},
    {MM_MODEM_ACCESS_TECHNOLOGY_EVDO0, CellularService::Evdo0},
    {MM_MODEM_ACCESS_TECHNOLOGY_EVDOA | MM_MODEM_ACCESS_TECHNOLOGY_EVDOB, CellularService::EvdoA},
    {MM_MODEM_ACCESS_TECHNOLOGY_LTE, CellularService::Lte},
};

// The technologies that carry data; GSM by itself does not.
constexpr uint DataAccess = MM_MODEM_ACCESS_TECHNOLOGY_GPRS | MM_MODEM_ACCESS_TECHNOLOGY_EDGE | UmtsAccess
    | MM_MODEM_ACCESS_TECHNOLOGY_1XRTT | EvdoAccess | MM_MODEM_ACCESS_TECHNOLOGY_LTE
    | MM_MODEM_ACCESS_TECHNOLOGY_5GNR;

} // namespace

QList<Technology> technologiesIn(uint accessTechnologies)
{
    QList<Technology> found;
    for (const auto &entry : Technologies) {
        if (accessTechnologies & entry.access)
            found.append(entry.technology);
    }
    return found;
}

CellularServices servicesIn(uint accessTechnologies)
{
    CellularServices found;
    for (const auto &entry : ModemServices)
        found.setFlag(entry.service, accessTechnologies & entry.access);
    found.setFlag(CellularService::Data, accessTechnologies & DataAccess);
    return found;
}

bool isRegistered(uint registrationState)
{
    switch (registrationState) {
    case MM_MODEM_3GPP_REGISTRATION_STATE_HOME:
    case MM_MODEM_3GPP_REGISTRATION_STATE_ROAMING:
    case MM_MODEM_3GPP_REGISTRATION_STATE_HOME_SMS_ONLY:
    case MM_MODEM_3GPP_REGISTRATION_STATE_ROAMING_SMS_ONLY:
    case MM_MODEM_3GPP_REGISTRATION_STATE_HOME_CSFB_NOT_PREFERRED:
    case MM_MODEM_3GPP_REGISTRATION_STATE_ROAMING_CSFB_NOT_PREFERRED:
        return true;
    default:
        return false;
    }
}

} // namespace oz::services
