#include "radio/SimulatedRadio.hpp"

#include "cellular-network/SimulatedNetworks.hpp"
#include "cellular/Cellular.hpp"
#include "source/Error.hpp"

#include <numeric>

namespace oz::services {

namespace {

QList<int> numbers(int first, int last)
{
    QList<int> all(last - first + 1);
    std::iota(all.begin(), all.end(), first);
    return all;
}

// A device that lists none does not say which it allows.
std::optional<QVariant> seenEnabled(const SeenValues &seen)
{
    const QStringList enabled = seen("enabled").toStringList();
    return enabled.isEmpty() ? std::nullopt : std::optional(QVariant(enabled));
}

} // namespace

const Settings<SimulatedRadio> &SimulatedRadio::table()
{
    using R = SimulatedRadio;
    using C = SettingColumns<SimulatedRadio>;
    const QStringList technologies = wordsIn(technologyWords());
    static const Settings<SimulatedRadio> table{
        {"power", C::truth(&R::m_poweredOn), true, "whether the radio is on",
            onOff("power", "switches the radio"), {"power"}},
        {"technologies", C::list(&R::m_technologies, technologies), technologies,
            "the technologies that the hardware supports", {}, {"hardware"}},
        {"enabled-technologies", C::list(&R::m_enabled, technologies), technologies,
            "the technologies that the user allows, of those of the hardware",
            told("enable", "TECHNOLOGY,...", "lets networks of these technologies serve, and no others"),
            {.value = seenEnabled}},
        {"services", C::list(&R::m_services, serviceWords()), serviceWords(),
            "the services that the hardware supports"},
        {"data", C::truth(&R::m_data), true, "whether the user has switched on mobile data",
            onOff("data", "switches mobile data"), {"data"}},
        {"data-roaming", C::truth(&R::m_dataRoaming), false,
            "whether the user allows mobile data while roaming",
            onOff("data-roaming", "allows mobile data while roaming"), {"data-roaming"}},
    };
    return table;
}

SimulatedRadio::SimulatedRadio(const JsonNode &section, SimulatedParts &phone)
    : m_networks(phone.part<SimulatedNetworks>())
{
    const QString technologies = QStringLiteral("technologies");
    m_technologies = wordsIn(technologyWords());
    if (section.contains(technologies))
        m_technologies = section.value(technologies, {ValueType::List, {}, m_technologies}).toStringList();
    read(section, settings({}), {QStringLiteral("bands")});
    readBands(section.map(QStringLiteral("bands")));
    connect(m_networks.get(), &SimulatedNetworks::served, this, &SimulatedRadio::tell);
    update();
}

// The user may allow some of the technologies that the hardware has, and at first allows all.
std::vector<Setting> SimulatedRadio::settings(const QString &instance)
{
    std::vector<Setting> settings = PartOfTable::settings(instance);
    for (Setting &setting : settings) {
        if (setting.key == u"enabled-technologies") {
            setting.type.words = m_technologies;
            setting.initial = m_technologies;
        }
    }
    return settings;
}

void SimulatedRadio::readBands(const JsonNode &bands)
{
    bands.allowOnly(
        {QStringLiteral("cdma"), QStringLiteral("gsm"), QStringLiteral("umts"), QStringLiteral("lte")});
    m_bands = {
        .cdma = bands.integers(QStringLiteral("cdma"), {0, 1}, {0, 1, 15}),
        .gsm = bands.integers(QStringLiteral("gsm"), {850, 900, 1800, 1900}, {850, 900, 1800, 1900}),
        .umts = bands.integers(QStringLiteral("umts"), {1, 2, 5, 8}, numbers(1, 10)),
        .lte = bands.integers(QStringLiteral("lte"), {3, 7, 20}, numbers(1, 31)),
    };
}

bool SimulatedRadio::isDataRoaming() const
{
    return dataObstacle().isEmpty() && m_networks->dataNetwork()->isRoaming();
}

QString SimulatedRadio::dataObstacle() const
{
    if (!m_poweredOn)
        return QStringLiteral("the radio is off");
    if (!m_data)
        return QStringLiteral("mobile data is off");
    const CellularNetworks::Network *network = m_networks->dataNetwork();
    if (!network)
        return QStringLiteral("no network offers data");
    if (network->isRoaming() && !m_dataRoaming)
        return QStringLiteral("mobile data is not allowed while roaming");
    return {};
}

// Ends with tell(), through the networks.
void SimulatedRadio::update()
{
    m_networks->allow(m_poweredOn ? technologiesOf(m_enabled) : QList<Technology>());
}

void SimulatedRadio::tell()
{
    save();
    Radio radio;
    radio.poweredOn = m_poweredOn;
    radio.technologies = technologiesOf(m_technologies);
    radio.services = servicesOf(m_services);
    radio.bands = m_bands;
    radio.enabledTechnologies = technologiesOf(m_enabled);
    radio.networks = m_networks->servingTechnologies();
    know(radio);
    Q_EMIT dataChanged();
}

} // namespace oz::services
