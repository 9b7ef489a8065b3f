#include "CellularNetworkInfoPrivate.hpp"

#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/CellularRadioInfo.hpp>

namespace oz::device {

namespace {

using Selection = CellularNetworkInfoPrivate::Selection;
using Values = CellularNetworkInfoPrivate::Values;

const QString PublicCdma1XPpsPath =
    QStringLiteral("/pps/services/cellular/radioctrl/status_cell_cdma_public");
const QString PrivateCdma1XPpsPath =
    QStringLiteral("/pps/services/cellular/radioctrl/status_cell_cdma_private");
const QString PublicOtherPpsPath = QStringLiteral("/pps/services/cellular/radioctrl/status_cell_public");
const QString PrivateOtherPpsPath = QStringLiteral("/pps/services/cellular/radioctrl/status_cell_private");
const QString SettingsPpsPath = QStringLiteral("/pps/services/rum/csm/status_public");

constexpr LogText SettingsOpenFailed{
    "CellularNetworkInfo - failed to open settings PPS object: ", LogText::ErrorString};
constexpr ReadTexts SettingsReading{
    {"failed to read raw data: ", LogText::ErrorString}, {"failed to decode data"}};
constexpr LogText PublicOpenFailed{
    "CellularNetworkInfo - failed to open public PPS object: ", LogText::ErrorString};
constexpr ReadTexts PublicReading{
    {"CellularNetworkInfo - failed to read public PPS data: ", LogText::ErrorString},
    {"CellularNetworkInfo - failed to decode public PPS data"}};
constexpr LogText PrivateOpenFailed{
    "CellularNetworkInfo - failed to open private PPS object: ", LogText::ErrorString};
constexpr ReadTexts PrivateReading{
    {"CellularNetworkInfo - failed to read private PPS data: ", LogText::ErrorString},
    {"CellularNetworkInfo - failed to decode private PPS data"}};

using SelectionChanges =
    ChangeTable<Change<Fields<&Selection::technology>,
                    qOverload<CellularTechnology::Type>(&CellularNetworkInfo::technologyChanged),
                    qOverload<int>(&CellularNetworkInfo::technologyChanged)>,
        Change<Fields<&Selection::index>, &CellularNetworkInfo::indexChanged>>;

using Changes = ChangeTable<Change<Fields<&Values::displayName>, &CellularNetworkInfo::displayNameChanged>,
    Change<Fields<&Values::services>,
        qOverload<CellularService::Types>(&CellularNetworkInfo::servicesChanged),
        qOverload<int>(&CellularNetworkInfo::servicesChanged)>,
    Change<Fields<&Values::name>, &CellularNetworkInfo::nameChanged>,
    Change<Fields<&Values::mobileCountryCode>, &CellularNetworkInfo::mobileCountryCodeChanged>,
    Change<Fields<&Values::mobileNetworkCode>, &CellularNetworkInfo::mobileNetworkCodeChanged>,
    Change<Fields<&Values::signalStrength>, &CellularNetworkInfo::signalStrengthChanged>,
    Change<Fields<&Values::roaming>, &CellularNetworkInfo::roamingChanged>,
    Change<Fields<&Values::cellId>, &CellularNetworkInfo::cellIdChanged>,
    Change<Fields<&Values::locationAreaCode>, &CellularNetworkInfo::locationAreaCodeChanged>,
    Change<Fields<&Values::trackingAreaCode>, &CellularNetworkInfo::trackingAreaCodeChanged>,
    Change<Fields<&Values::baseStationId>, &CellularNetworkInfo::baseStationIdChanged>,
    Change<Fields<&Values::networkId>, &CellularNetworkInfo::networkIdChanged>,
    Change<Fields<&Values::systemId>, &CellularNetworkInfo::systemIdChanged>>;

} // namespace

CellularTechnology::Type findTechByIndex(int index, CellularTechnology::Types active)
{
    constexpr CellularTechnology::Type ByPriority[] = {CellularTechnology::Gsm, CellularTechnology::Umts,
        CellularTechnology::Evdo, CellularTechnology::Lte, CellularTechnology::Cdma1X};
    constexpr CellularTechnology::Types Cdma1X_Evdo(CellularTechnology::Cdma1X | CellularTechnology::Evdo);
    constexpr CellularTechnology::Types Cdma1X_Lte(CellularTechnology::Cdma1X | CellularTechnology::Lte);

    if (index != 0 && index != 1)
        return CellularTechnology::None;
    if (index == 0) {
        for (const CellularTechnology::Type technology : ByPriority) {
            if (active.testFlag(technology))
                return technology;
        }
    }
    // One member in common is enough: applications rely on it.
    return active & (Cdma1X_Evdo | Cdma1X_Lte) ? CellularTechnology::Cdma1X : CellularTechnology::None;
}

CellularNetworkInfoPrivate::CellularNetworkInfoPrivate(int index, CellularNetworkInfo *publicObject)
    : QObject(publicObject), q(publicObject), m_radioInfo(new CellularRadioInfo(this)),
      m_settingsObject(new PpsObject(SettingsPpsPath, this))
{
    m_selection.begin({.index = index});
    if (openOrLog(m_settingsObject, PpsOpenMode::Subscribe, SettingsOpenFailed))
        connect(m_settingsObject, &PpsObject::readyRead, this, &CellularNetworkInfoPrivate::updateState);
    updatePpsObjects();
    connect(m_radioInfo, qOverload<CellularTechnology::Types>(&CellularRadioInfo::activeTechnologiesChanged),
        this, &CellularNetworkInfoPrivate::updatePpsObjects);
}

void CellularNetworkInfoPrivate::setIndex(int index)
{
    if (index == m_selection->index)
        return;
    const QPointer<CellularNetworkInfo> alive(q);
    SelectionChanges::store(&m_selection, {index, m_selection->technology});
    updatePpsObjects();
    if (alive)
        SelectionChanges::emitUntold(q, &m_selection);
}

void CellularNetworkInfoPrivate::updatePpsObjects()
{
    const CellularTechnology::Type technology =
        findTechByIndex(m_selection->index, m_radioInfo->activeTechnologies());
    if (technology == m_selection->technology)
        return;
    SelectionChanges::store(&m_selection, {m_selection->index, technology});
    delete std::exchange(m_publicObject, nullptr);
    delete std::exchange(m_privateObject, nullptr);
    if (technology != CellularTechnology::None) {
        const bool cdma = technology == CellularTechnology::Cdma1X;
        m_publicObject = new PpsObject(cdma ? PublicCdma1XPpsPath : PublicOtherPpsPath, this);
        m_privateObject = new PpsObject(cdma ? PrivateCdma1XPpsPath : PrivateOtherPpsPath, this);
        const auto follow = [this](PpsObject *pps, const LogText &openFailed) {
            const bool opened = openOrLog(pps, PpsOpenMode::Subscribe, openFailed);
            if (opened)
                connect(pps, &PpsObject::readyRead, this, &CellularNetworkInfoPrivate::updateState);
            return opened;
        };
        if (follow(m_publicObject, PublicOpenFailed))
            follow(m_privateObject, PrivateOpenFailed);
    }
    const QPointer<CellularNetworkInfo> alive(q);
    updateFrom(nullptr);
    if (alive)
        SelectionChanges::emitUntold(q, &m_selection);
}

void CellularNetworkInfoPrivate::updateState()
{
    updateFrom(sender());
}

// Reads what \a source tells, or everything where it is null. The sender of the slot would not do: while the
// radio's signal is handled, it is the radio.
void CellularNetworkInfoPrivate::updateFrom(const QObject *source)
{
    const bool fromSettings = !source || source == m_settingsObject;
    const bool fromPublic = !source || source == m_publicObject;
    const bool fromPrivate = !source || source == m_privateObject;
    const QPointer<CellularNetworkInfo> alive(q);
    if (fromSettings) {
        Values fresh = *m_values;
        fresh.displayName = readSettingsProperty(QStringLiteral("network_name"));
        Changes::storeAndEmit(q, &m_values, fresh);
    }
    if (alive && fromPublic) {
        Values fresh = *m_values;
        static_cast<PublicState &>(fresh) = readPublicState();
        Changes::storeAndEmit(q, &m_values, fresh);
    }
    if (alive && fromPrivate) {
        Values fresh = *m_values;
        static_cast<PrivateState &>(fresh) = readPrivateState();
        Changes::storeAndEmit(q, &m_values, fresh);
    }
}

CellularNetworkInfoPrivate::PublicState CellularNetworkInfoPrivate::readPublicState()
{
    const QVariantMap cell = attributesOrLog(m_publicObject, PublicReading);
    const auto member = [&cell](const QString &attribute, const QString &name) {
        return memberOf(cell, attribute, name);
    };
    return {
        .services = CellularService::Types::fromInt(cell.value(QStringLiteral("network_service")).toInt()),
        .name = member(QStringLiteral("network_name"), QStringLiteral("name")).toString(),
        .mobileCountryCode = member(QStringLiteral("serving_network"), QStringLiteral("mcc")).toString(),
        .mobileNetworkCode = member(QStringLiteral("serving_network"), QStringLiteral("mnc")).toString(),
        .signalStrength = member(QStringLiteral("signal_strength"), QStringLiteral("RSSI")).toInt(),
        .roaming =
            member(QStringLiteral("roaming"), QStringLiteral("state")).toString() == QLatin1String("ROAMING")
            && !member(QStringLiteral("roaming"), QStringLiteral("suppress")).toBool(),
    };
}

CellularNetworkInfoPrivate::PrivateState CellularNetworkInfoPrivate::readPrivateState()
{
    const QVariantMap network =
        attributesOrLog(m_privateObject, PrivateReading).value(QStringLiteral("serving_network")).toMap();
    return {
        .cellId = network.value(QStringLiteral("cell_id")).toInt(),
        .locationAreaCode = network.value(QStringLiteral("lac")).toInt(),
        .trackingAreaCode = network.value(QStringLiteral("tac")).toInt(),
        .baseStationId = network.value(QStringLiteral("bid")).toInt(),
        .networkId = network.value(QStringLiteral("nid")).toInt(),
        .systemId = network.value(QStringLiteral("sid")).toInt(),
    };
}

QString CellularNetworkInfoPrivate::readSettingsProperty(const QString &key)
{
    return attributesOrLog(m_settingsObject, SettingsReading).value(key).toString();
}

} // namespace oz::device
