#include "radio/SimulatedRadio.hpp"

#include "cellular-network/SimulatedNetworks.hpp"
#include "publishing/Error.hpp"
#include "radio/CellularWords.hpp"

#include <numeric>

namespace oz::services {

namespace {

QList<int> numbers(int first, int last)
{
    QList<int> all(last - first + 1);
    std::iota(all.begin(), all.end(), first);
    return all;
}

} // namespace

SimulatedRadio::SimulatedRadio(const JsonNode &section, SimulatedPhone &phone)
    : m_networks(phone.part<SimulatedNetworks>())
{
    const QString technologies = QStringLiteral("technologies");
    const QString enabled = QStringLiteral("enabled-technologies");
    section.allowOnly({QStringLiteral("power"), technologies, enabled, QStringLiteral("services"),
        QStringLiteral("bands"), QStringLiteral("data"), QStringLiteral("data-roaming")});
    m_poweredOn = section.boolean(QStringLiteral("power"), true);
    m_technologies =
        section.words(technologies, CellularWords::technologies(), CellularWords::technologies());
    m_enabled = section.words(enabled, m_technologies, m_technologies);
    m_state.technologies = CellularWords::technologiesOf(m_technologies);
    m_state.services = CellularWords::servicesOf(
        section.words(QStringLiteral("services"), CellularWords::services(), CellularWords::services()));
    const JsonNode bands = section.map(QStringLiteral("bands"));
    bands.allowOnly(
        {QStringLiteral("cdma"), QStringLiteral("gsm"), QStringLiteral("umts"), QStringLiteral("lte")});
    m_state.bands = RadioState::Bands{
        .cdma = bands.integers(QStringLiteral("cdma"), {0, 1}, {0, 1, 15}),
        .gsm = bands.integers(QStringLiteral("gsm"), {850, 900, 1800, 1900}, {850, 900, 1800, 1900}),
        .umts = bands.integers(QStringLiteral("umts"), {1, 2, 5, 8}, numbers(1, 10)),
        .lte = bands.integers(QStringLiteral("lte"), {3, 7, 20}, numbers(1, 31)),
    };
    m_data = section.boolean(QStringLiteral("data"), true);
    m_dataRoaming = section.boolean(QStringLiteral("data-roaming"), false);
    connect(m_networks.get(), &SimulatedNetworks::served, this, &SimulatedRadio::tell);
    allowNetworks();
}

std::vector<SimVerb> SimulatedRadio::verbs(const QString &)
{
    const QString technologies = QStringLiteral("TECHNOLOGY,...");
    return {
        SimVerb::onOff(
            QStringLiteral("power"), QStringLiteral("switches the radio"),
            [this](bool on) {
                m_poweredOn = on;
                allowNetworks();
            },
            [this] { return m_poweredOn; }),
        SimVerb{QStringLiteral("enable"), {technologies},
            QStringLiteral("lets networks of these technologies serve, and no others"),
            [this](const QStringList &words) {
                const QStringList wanted = words[0].split(u',', Qt::SkipEmptyParts);
                for (const QString &technology : wanted)
                    (void)SimArgument::oneOf(technology, m_technologies);
                m_enabled = wanted;
                allowNetworks();
            }}
            .with([this] { return m_enabled.join(u','); }, {{technologies, {m_technologies}}}),
        SimVerb::onOff(
            QStringLiteral("data"), QStringLiteral("switches mobile data"),
            [this](bool on) {
                m_data = on;
                tell();
            },
            [this] { return m_data; }),
        SimVerb::onOff(
            QStringLiteral("data-roaming"), QStringLiteral("allows mobile data while roaming"),
            [this](bool on) {
                m_dataRoaming = on;
                tell();
            },
            [this] { return m_dataRoaming; }),
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
    const CellularNetworkState::Network *network = m_networks->dataNetwork();
    if (!network)
        return QStringLiteral("no network offers data");
    if (network->isRoaming() && !m_dataRoaming)
        return QStringLiteral("mobile data is not allowed while roaming");
    return {};
}

QVariantMap SimulatedRadio::saved() const
{
    return {{QStringLiteral("power"), m_poweredOn}, {QStringLiteral("enabled"), m_enabled},
        {QStringLiteral("data"), m_data}, {QStringLiteral("data-roaming"), m_dataRoaming}};
}

void SimulatedRadio::restore(const QVariantMap &saved)
{
    m_poweredOn = saved.value(QStringLiteral("power")).toBool();
    m_data = saved.value(QStringLiteral("data")).toBool();
    m_dataRoaming = saved.value(QStringLiteral("data-roaming")).toBool();
    m_enabled.clear();
    for (const QString &technology : saved.value(QStringLiteral("enabled")).toStringList()) {
        if (m_technologies.contains(technology))
            m_enabled.append(technology);
    }
    allowNetworks();
}

// Ends with tell(), through the networks.
void SimulatedRadio::allowNetworks()
{
    m_networks->allow(m_poweredOn ? CellularWords::technologiesOf(m_enabled) : QList<Technology>());
}

void SimulatedRadio::tell()
{
    save();
    RadioState state = m_state;
    state.poweredOn = m_poweredOn;
    state.enabledTechnologies = CellularWords::technologiesOf(m_enabled);
    state.networks = m_networks->servingTechnologies();
    know(state);
    Q_EMIT dataChanged();
}

} // namespace oz::services
