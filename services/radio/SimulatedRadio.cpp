#include "radio/SimulatedRadio.hpp"

#include "cellularnetwork/SimulatedNetworks.hpp"
#include "core/Error.hpp"
#include "radio/CellularTerms.hpp"

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

SimulatedRadio::SimulatedRadio(const JsonNode &section, SimulatedNetworks &networks) : m_networks(networks)
{
    const QString technologies = QStringLiteral("technologies");
    const QString enabled = QStringLiteral("enabled-technologies");
    section.allowOnly({QStringLiteral("power"), technologies, enabled, QStringLiteral("services"),
        QStringLiteral("bands"), QStringLiteral("data"), QStringLiteral("data-roaming")});
    m_state.poweredOn = section.boolean(QStringLiteral("power"), true);
    m_state.technologies =
        section.words(technologies, CellularTerms::technologies(), CellularTerms::technologies());
    m_state.enabledTechnologies = section.words(enabled, m_state.technologies, m_state.technologies);
    m_state.services =
        section.words(QStringLiteral("services"), CellularTerms::services(), CellularTerms::services());
    const JsonNode bands = section.map(QStringLiteral("bands"));
    bands.allowOnly(
        {QStringLiteral("cdma"), QStringLiteral("gsm"), QStringLiteral("umts"), QStringLiteral("lte")});
    m_state.bands = {
        .cdma = bands.integers(QStringLiteral("cdma"), {0, 1}, {0, 1, 15}),
        .gsm = bands.integers(QStringLiteral("gsm"), {850, 900, 1800, 1900}, {850, 900, 1800, 1900}),
        .umts = bands.integers(QStringLiteral("umts"), {1, 2, 5, 8}, numbers(1, 10)),
        .lte = bands.integers(QStringLiteral("lte"), {3, 7, 20}, numbers(1, 31)),
    };
    m_data = section.boolean(QStringLiteral("data"), true);
    m_dataRoaming = section.boolean(QStringLiteral("data-roaming"), false);
    connect(&m_networks, &SimulatedNetworks::served, this, &SimulatedRadio::changed);
    allowNetworks();
}

std::optional<RadioSource::State> SimulatedRadio::state() const
{
    State state = m_state;
    state.networks = m_networks.servingTechnologies();
    return state;
}

std::vector<SimVerb> SimulatedRadio::verbs(const QString &)
{
    return {
        SimVerb::onOff(QStringLiteral("power"), QStringLiteral("switches the radio"),
            [this](bool on) {
                m_state.poweredOn = on;
                allowNetworks();
            }),
        {QStringLiteral("enable"), {QStringLiteral("TECHNOLOGY,...")},
            QStringLiteral("lets networks of these technologies serve, and no others"),
            [this](const QStringList &words) {
                const QStringList wanted = words[0].split(u',', Qt::SkipEmptyParts);
                for (const QString &technology : wanted)
                    (void)SimArgument::oneOf(technology, m_state.technologies);
                m_state.enabledTechnologies = wanted;
                allowNetworks();
            }},
        SimVerb::onOff(QStringLiteral("data"), QStringLiteral("switches mobile data"),
            [this](bool on) {
                m_data = on;
                Q_EMIT changed();
            }),
        SimVerb::onOff(QStringLiteral("data-roaming"), QStringLiteral("allows mobile data while roaming"),
            [this](bool on) {
                m_dataRoaming = on;
                Q_EMIT changed();
            }),
    };
}

bool SimulatedRadio::isDataRoaming() const
{
    return dataObstacle().isEmpty() && m_networks.dataNetwork()->isRoaming();
}

QString SimulatedRadio::dataObstacle() const
{
    if (!m_state.poweredOn)
        return QStringLiteral("the radio is off");
    if (!m_data)
        return QStringLiteral("mobile data is off");
    const CellularNetworkSource::Network *network = m_networks.dataNetwork();
    if (!network)
        return QStringLiteral("no network offers data");
    if (network->isRoaming() && !m_dataRoaming)
        return QStringLiteral("mobile data is not allowed while roaming");
    return {};
}

// Ends with changed(), through the networks.
void SimulatedRadio::allowNetworks()
{
    m_networks.allow(m_state.poweredOn ? m_state.enabledTechnologies : QStringList());
}

} // namespace oz::services
