#include "cellular-network/SimulatedNetworks.hpp"

#include "phone/ShippedPhone.hpp"
#include "publishing/Error.hpp"
#include "radio/CellularWords.hpp"
#include "simcard/SimulatedSimCard.hpp"

#include <QRegularExpression>

namespace oz::services {

namespace {

using Cell = CellularNetworkState::Cell;
using Network = CellularNetworkState::Network;

const QString Cdma1x = QStringLiteral("cdma_1x");

// The key of each identifier, and the technologies that have it.
struct CellKey
{
    QString key;
    std::optional<int> Cell::*field;
    QStringList technologies;
};

const QList<CellKey> &cellKeys()
{
    const QString gsm = QStringLiteral("gsm");
    const QString umts = QStringLiteral("umts");
    const QString lte = QStringLiteral("lte");
    const QString evdo = QStringLiteral("evdo");
    static const QList<CellKey> keys{
        {QStringLiteral("cell-id"), &Cell::cellId, {gsm, umts, lte}},
        {QStringLiteral("lac"), &Cell::locationArea, {gsm, umts}},
        {QStringLiteral("tac"), &Cell::trackingArea, {lte}},
        {QStringLiteral("bid"), &Cell::baseStation, {Cdma1x, evdo}},
        {QStringLiteral("nid"), &Cell::network, {Cdma1x, evdo}},
        {QStringLiteral("sid"), &Cell::system, {Cdma1x, evdo}},
    };
    return keys;
}

QString code(const JsonNode &node, const QString &key, const QString &fallback, const QString &digits)
{
    QString value = node.text(key, fallback);
    static const QRegularExpression threeDigits(QStringLiteral("^[0-9]{3}$"));
    static const QRegularExpression twoOrThreeDigits(QStringLiteral("^[0-9]{2,3}$"));
    if (!(key == u"mcc" ? threeDigits : twoOrThreeDigits).match(value).hasMatch())
        node.fail(
            QLatin1String("expected ") + digits + QLatin1String(" digits, found \"") + value + u'"', key);
    return value;
}

} // namespace

SimulatedNetworks::SimulatedNetworks(const JsonNode &section, SimulatedPhone &phone)
    : m_simCard(phone.part<SimulatedSimCard>())
{
    section.allowOnly({QStringLiteral("networks"), QStringLiteral("serving")});
    readNetworks(section);
    connect(m_simCard.get(), &SimulatedSimCard::changed, this, &SimulatedNetworks::update);
    update();
}

void SimulatedNetworks::readNetworks(const JsonNode &section)
{
    const QString networks = QStringLiteral("networks");
    const QString serving = QStringLiteral("serving");
    const JsonNode all =
        (section.contains(networks) ? section : shippedSection(QStringLiteral("cellular-network")))
            .map(networks);
    for (const auto &member : all.members())
        m_known.push_back(readNetwork(member.first, all.map(member.first)));
    const QStringList first = m_known.empty() ? QStringList() : QStringList{m_known.front().name};
    for (const QString &chosen : section.words(serving, first, instances())) {
        Known &known = find(chosen);
        for (const Known &other : m_known) {
            if (other.chosen && isCdma1x(other) == isCdma1x(known)) {
                section.fail(other.name + QLatin1String(" and ") + known.name
                        + QLatin1String(" cannot serve at once; one beside another is CDMA 1X"),
                    serving);
            }
        }
        known.chosen = true;
    }
}

SimulatedNetworks::Known SimulatedNetworks::readNetwork(const QString &name, const JsonNode &node)
{
    Known known{name, {}, {}};
    const QString technology =
        node.word(QStringLiteral("technology"), QStringLiteral("lte"), CellularWords::technologies());
    known.technology = CellularWords::technologiesOf({technology}).first();
    QStringList keys{QStringLiteral("technology"), QStringLiteral("operator"), QStringLiteral("display-name"),
        QStringLiteral("mcc"), QStringLiteral("mnc"), QStringLiteral("rssi"), QStringLiteral("services"),
        QStringLiteral("roaming"), QStringLiteral("suppress")};
    Network &network = known.network;
    network.operatorName = node.text(QStringLiteral("operator"), name);
    network.displayName = node.text(QStringLiteral("display-name"), *network.operatorName);
    network.countryCode = code(node, QStringLiteral("mcc"), QStringLiteral("001"), QStringLiteral("three"));
    network.networkCode =
        code(node, QStringLiteral("mnc"), QStringLiteral("01"), QStringLiteral("two or three"));
    network.signalStrength = node.integer(QStringLiteral("rssi"), -85, -150, -1);
    network.services = CellularWords::servicesOf(node.words(QStringLiteral("services"),
        {QStringLiteral("emergency"), QStringLiteral("voice"), QStringLiteral("data")},
        CellularWords::services()));
    network.roams = node.boolean(QStringLiteral("roaming"), false);
    network.suppressesRoaming = node.boolean(QStringLiteral("suppress"), false);
    for (const CellKey &cell : cellKeys()) {
        if (!cell.technologies.contains(technology))
            continue;
        keys.append(cell.key);
        if (node.contains(cell.key))
            network.cell.*cell.field = node.integer(cell.key, 0, 1, 0x7fffffff);
    }
    node.allowOnly(keys);
    return known;
}

QStringList SimulatedNetworks::instances() const
{
    QStringList names;
    for (const Known &known : m_known)
        names.append(known.name);
    return names;
}

std::vector<SimVerb> SimulatedNetworks::verbs(const QString &instance)
{
    Known &known = find(instance);
    Network &network = known.network;
    return {
        SimVerb::state(
            QStringLiteral("serve"), QStringLiteral("lets it serve, in the place of one of its kind"),
            [this, &known] { choose(known); }, [&known] { return known.chosen; }),
        SimVerb::state(
            QStringLiteral("leave"), QStringLiteral("leaves it"),
            [this, &known] {
                known.chosen = false;
                update();
            },
            [&known] { return !known.chosen; }),
        SimVerb{QStringLiteral("rssi"), {QStringLiteral("DBM")}, QStringLiteral("sets its signal strength"),
            [this, &network](const QStringList &words) {
                network.signalStrength = SimArgument::integer(words[0], -150, -1);
                update();
            }}
            .with([&network] { return QString::number(network.signalStrength.value_or(0)); },
                {{QStringLiteral("DBM"), {{}, -150, -1, 1, QStringLiteral("dBm")}}}),
        SimVerb{QStringLiteral("operator"), {QStringLiteral("NAME")},
            QStringLiteral("sets the operator's name, which is shown too"),
            [this, &network](const QStringList &words) {
                network.operatorName = network.displayName = words[0];
                update();
            }}
            .with([&network] { return network.operatorName.value_or(QString()); }),
        SimVerb::onOff(
            QStringLiteral("roaming"), QStringLiteral("makes it a network of others"),
            [this, &network](bool on) {
                network.roams = on;
                update();
            },
            [&network] { return network.roams.value_or(false); }),
        SimVerb::onOff(
            QStringLiteral("suppress"), QStringLiteral("hides the roaming there from the user"),
            [this, &network](bool on) {
                network.suppressesRoaming = on;
                update();
            },
            [&network] { return network.suppressesRoaming; }),
    };
}

void SimulatedNetworks::allow(const QList<Technology> &technologies)
{
    m_allowed = technologies;
    update();
}

QList<Technology> SimulatedNetworks::servingTechnologies() const
{
    QList<Technology> technologies;
    for (const Known &known : m_known) {
        if (serves(known))
            technologies.append(known.technology);
    }
    return technologies;
}

const Network *SimulatedNetworks::dataNetwork() const
{
    const Network *found = nullptr;
    for (const Known &known : m_known) {
        if (m_simCard->isReady() && serves(known) && known.network.services->testFlag(CellularService::Data)
            && (!found || !isCdma1x(known)))
            found = &known.network;
    }
    return found;
}

SimulatedNetworks::Known &SimulatedNetworks::find(const QString &name)
{
    return *std::find_if(
        m_known.begin(), m_known.end(), [&](const Known &known) { return known.name == name; });
}

void SimulatedNetworks::choose(Known &known)
{
    if (!m_allowed.contains(known.technology)) {
        throw Error(m_allowed.isEmpty()
                ? QStringLiteral("the radio is off")
                : QString(CellularWords::wordOf(known.technology) + QLatin1String(" is not enabled")));
    }
    for (Known &other : m_known) {
        if (isCdma1x(other) == isCdma1x(known))
            other.chosen = false;
    }
    known.chosen = true;
    update();
}

bool SimulatedNetworks::serves(const Known &known) const
{
    return known.chosen && m_allowed.contains(known.technology);
}

bool SimulatedNetworks::isCdma1x(const Known &known)
{
    return known.technology == Technology::Cdma1x;
}

QVariantMap SimulatedNetworks::saved() const
{
    QVariantMap saved;
    for (const Known &known : m_known) {
        const Network &network = known.network;
        saved.insert(known.name,
            QVariantMap{{QStringLiteral("chosen"), known.chosen},
                {QStringLiteral("rssi"), *network.signalStrength},
                {QStringLiteral("operator"), *network.operatorName},
                {QStringLiteral("name"), *network.displayName}, {QStringLiteral("roams"), *network.roams},
                {QStringLiteral("suppresses"), network.suppressesRoaming}});
    }
    return saved;
}

void SimulatedNetworks::restore(const QVariantMap &saved)
{
    for (Known &known : m_known) {
        const QVariantMap before = saved.value(known.name).toMap();
        if (before.isEmpty())
            continue;
        Network &network = known.network;
        known.chosen = before.value(QStringLiteral("chosen")).toBool();
        network.signalStrength = std::clamp(before.value(QStringLiteral("rssi")).toInt(), -150, -1);
        network.operatorName = before.value(QStringLiteral("operator")).toString();
        network.displayName = before.value(QStringLiteral("name")).toString();
        network.roams = before.value(QStringLiteral("roams")).toBool();
        network.suppressesRoaming = before.value(QStringLiteral("suppresses")).toBool();
    }
    update();
}

void SimulatedNetworks::update()
{
    save();
    CellularNetworkState state;
    for (const Known &known : m_known) {
        if (!serves(known))
            continue;
        auto &place = isCdma1x(known) ? state.cdma1x : state.primary;
        place = known.network;
        if (!m_simCard->isReady())
            place->services = CellularService::Emergency;
    }
    know(state);
    Q_EMIT served();
}

} // namespace oz::services
