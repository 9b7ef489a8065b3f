#include "CellularRadioInfoPrivate.hpp"

#include "NamedValue.hpp"
#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

namespace {

using Values = CellularRadioInfoPrivate::Values;
using Technologies = CellularTechnology::Types;

const QString PublicPpsPath = QStringLiteral("/pps/services/cellular/radioctrl/status_public");
const QString PersistentPpsPath = QStringLiteral("/pps/services/cellular/radioctrl/status_persistent");
const QString DataPpsPath =
    QStringLiteral("/pps/services/cds/cnice/status?f=data_services_status+data_roaming_status");

constexpr LogText PublicOpenFailed{
    "CellularRadioInfo - failed to open public PPS object: ", LogText::ErrorString};
constexpr ReadTexts PublicReading{
    {"CellularRadioInfo - failed to read public PPS data: ", LogText::ErrorString},
    {"CellularRadioInfo - failed to decode public PPS data"}};
constexpr LogText PersistentOpenFailed{
    "CellularRadioInfo - failed to open persistent PPS object: ", LogText::ErrorString};
constexpr ReadTexts PersistentReading{
    {"CellularRadioInfo - failed to read persistent PPS data: ", LogText::ErrorString},
    {"CellularRadioInfo - failed to decode persistent PPS data"}};
constexpr LogText DataOpenFailed{
    "CellularRadioInfo - failed to open data services PPS object: ", LogText::ErrorString};
constexpr ReadTexts DataReading{
    {"CellularRadioInfo - failed to read data services PPS data: ", LogText::ErrorString},
    {"CellularRadioInfo - failed to decode data services PPS data"}};

constexpr NamedValue<CellularTechnology::Type> TechnologyNames[] = {
    {"gsm", CellularTechnology::Gsm},
    {"umts", CellularTechnology::Umts},
    {"cdma_1x", CellularTechnology::Cdma1X},
    {"evdo", CellularTechnology::Evdo},
    {"lte", CellularTechnology::Lte},
};

// Any of the bits in the mask of a family stands for the band.
struct BandBits
{
    int bits;
    CellularBand::Type band;
};

constexpr BandBits CdmaBands[] = {
    {0x1, CellularBand::Cdma0},
    {0x2, CellularBand::CdmaI},
    {0x4, CellularBand::CdmaXV},
};

constexpr BandBits GsmBands[] = {
    {0x1, CellularBand::Gsm900},
    {0x2, CellularBand::Gsm1800},
    {0x4, CellularBand::Gsm1900},
    {0x8, CellularBand::Gsm850},
};

constexpr BandBits UmtsBands[] = {
    {0x1, CellularBand::UmtsI},
    {0x2, CellularBand::UmtsII},
    {0x4, CellularBand::UmtsIII},
    {0x8, CellularBand::UmtsIV},
    {0x10, CellularBand::UmtsV},
    {0x20, CellularBand::UmtsVI},
    {0x40, CellularBand::UmtsVII},
    {0x80, CellularBand::UmtsVIII},
    {0x100, CellularBand::UmtsIX},
    {0x200, CellularBand::UmtsX},
};

// Bit n-1 stands for band n; that bit 0x1 gives band XX too is how applications know it.
constexpr BandBits LteBands[] = {
    {0x2, CellularBand::LteII},
    {0x4, CellularBand::LteIII},
    {0x8, CellularBand::LteIV},
    {0x10, CellularBand::LteV},
    {0x40, CellularBand::LteVII},
    {0x80, CellularBand::LteVIII},
    {0x1000, CellularBand::LteXIII},
    {0x10000, CellularBand::LteXVII},
    {0x80001, CellularBand::LteXX},
};

using Changes = ChangeTable<Change<Fields<&Values::poweredOn>, &CellularRadioInfo::poweredOnChanged>,
    Change<Fields<&Values::activeTechnologies>,
        qOverload<Technologies>(&CellularRadioInfo::activeTechnologiesChanged),
        qOverload<int>(&CellularRadioInfo::activeTechnologiesChanged)>,
    Change<Fields<&Values::networkCount>, &CellularRadioInfo::networkCountChanged>,
    Change<Fields<&Values::enabledTechnologies>,
        qOverload<Technologies>(&CellularRadioInfo::enabledTechnologiesChanged),
        qOverload<int>(&CellularRadioInfo::enabledTechnologiesChanged)>,
    Change<Fields<&Values::dataEnabled>, &CellularRadioInfo::dataEnabledChanged>,
    Change<Fields<&Values::dataRoaming>, &CellularRadioInfo::dataRoamingChanged>>;

Technologies remapTech(const QStringList &names, int *count = nullptr)
{
    Technologies technologies;
    int known = 0;
    for (const QString &name : names) {
        if (const auto technology = valueNamed(TechnologyNames, name)) {
            technologies |= *technology;
            ++known;
        }
    }
    if (count)
        *count = known;
    return technologies;
}

CellularService::Types servicesOf(int bits)
{
    constexpr int AllServices = 0x3FF707;
    return CellularService::Types::fromInt(bits & AllServices);
}

CellularBand::Types bandsOf(const QVariantMap &capability)
{
    CellularBand::Types bands;
    const auto add = [&](const QString &family, const auto &table) {
        const int mask = capability.value(family).toInt();
        for (const BandBits &entry : table)
            bands.setFlag(entry.band, bands.testFlag(entry.band) || (mask & entry.bits));
    };
    add(QStringLiteral("cdma"), CdmaBands);
    add(QStringLiteral("gsm"), GsmBands);
    add(QStringLiteral("umts"), UmtsBands);
    add(QStringLiteral("lte"), LteBands);
    return bands;
}

} // namespace

CellularRadioInfoPrivate::CellularRadioInfoPrivate(CellularRadioInfo *publicObject)
    : QObject(publicObject), q(publicObject), m_publicObject(new PpsObject(PublicPpsPath, this)),
      m_persistentObject(new PpsObject(PersistentPpsPath, this)),
      m_dataObject(new PpsObject(DataPpsPath, this))
{
    // The radio is followed as a whole or not at all.
    if (!openOrLog(m_publicObject, PpsOpenMode::Subscribe, PublicOpenFailed)
        || !openOrLog(m_persistentObject, PpsOpenMode::Subscribe, PersistentOpenFailed)
        || !openOrLog(m_dataObject, PpsOpenMode::Subscribe, DataOpenFailed))
        return;
    Values first;
    static_cast<PublicState &>(first) = readPublicState();
    first.enabledTechnologies = readPersistentState();
    static_cast<DataState &>(first) = readDataState();
    m_values.begin(first);
    for (const PpsObject *pps : {m_publicObject, m_persistentObject, m_dataObject})
        connect(pps, &PpsObject::readyRead, this, &CellularRadioInfoPrivate::updateState);
}

void CellularRadioInfoPrivate::updateState()
{
    Values fresh = *m_values;
    if (sender() == m_publicObject) {
        // The abilities of the hardware are promised to stay.
        const PublicState reading = readPublicState();
        fresh.poweredOn = reading.poweredOn;
        fresh.activeTechnologies = reading.activeTechnologies;
        fresh.networkCount = reading.networkCount;
    } else if (sender() == m_persistentObject) {
        fresh.enabledTechnologies = readPersistentState();
    } else {
        static_cast<DataState &>(fresh) = readDataState();
    }
    Changes::storeAndEmit(q, &m_values, fresh);
}

CellularRadioInfoPrivate::PublicState CellularRadioInfoPrivate::readPublicState()
{
    const QVariantMap radio = attributesOrLog(m_publicObject, PublicReading);
    const QVariantMap capability = radio.value(QStringLiteral("provider_capability")).toMap();
    PublicState state;
    state.poweredOn = radio.value(QStringLiteral("power_status")).toString() == QLatin1String("ON");
    state.technologies = remapTech(capability.value(QStringLiteral("tech")).toStringList());
    state.services = servicesOf(capability.value(QStringLiteral("services")).toInt());
    state.bands = bandsOf(radio.value(QStringLiteral("band_capability")).toMap());
    state.activeTechnologies =
        remapTech(radio.value(QStringLiteral("network_technology")).toStringList(), &state.networkCount);
    return state;
}

CellularTechnology::Types CellularRadioInfoPrivate::readPersistentState()
{
    const QVariantMap settings = attributesOrLog(m_persistentObject, PersistentReading);
    return remapTech(memberOf(settings, QStringLiteral("configured_technologies"), QStringLiteral("enabled"))
                         .toStringList());
}

CellularRadioInfoPrivate::DataState CellularRadioInfoPrivate::readDataState()
{
    const QVariantMap data = attributesOrLog(m_dataObject, DataReading);
    return {
        .dataEnabled = data.value(QStringLiteral("data_services_status")).toString() == QLatin1String("ON"),
        .dataRoaming =
            data.value(QStringLiteral("data_roaming_status")).toString() == QLatin1String("ROAMING"),
    };
}

} // namespace oz::device
