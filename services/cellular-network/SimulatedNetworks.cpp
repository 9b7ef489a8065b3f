#include "cellular-network/SimulatedNetworks.hpp"

#include "cellular/Cellular.hpp"
#include "phone/ShippedPhone.hpp"
#include "simcard/SimulatedSimCard.hpp"

#include <algorithm>

namespace oz::services {

namespace {

using Cell = CellularNetworks::Cell;
using Network = CellularNetworks::Network;

const QString DisplayName = QStringLiteral("display-name");

} // namespace

const Settings<SimulatedNetworks> &SimulatedNetworks::table()
{
    using N = SimulatedNetworks;
    static const SettingColumn<N> serving{{ValueType::List},
        [](const N &part) { return QVariant(part.chosen()); },
        [](N &part, const QVariant &names) { part.setChosen(names.toStringList()); }};
    static const Settings<N> table{
        {"serving", serving.kept(), QStringList{QStringLiteral("home-lte")},
            "the networks that serve at the start; the first one if left out"},
    };
    return table;
}

const Settings<SimulatedNetworks::Known> &SimulatedNetworks::networkTable()
{
    using K = Known;
    using C = SettingColumns<Known>;
    static const auto of = [](auto member) {
        return [member](auto &known) -> auto &
        {
            return known.network.*member;
        };
    };
    static const auto cell = [](std::optional<int> Cell::*member) {
        return C::number(
            [member](auto &known) -> auto & { return known.network.cell.*member; }, 1, 0x7fffffff);
    };
    static const SettingColumn<Known> services{{ValueType::List, {}, serviceWords()},
        [](const K &known) { return QVariant(wordsOf(*known.network.services)); },
        [](K &known, const QVariant &words) { known.network.services = servicesOf(words.toStringList()); }};
    static const Settings<Known> table{
        {"technology", C::words(&K::technology, technologyWords()), QStringLiteral("lte"), "its technology"},
        {"operator", C::text(of(&Network::operatorName)).alwaysKnown().by(&K::setOperator), QString(),
            "its operator; its name in the file if left out",
            told("operator", "NAME", "sets the operator's name, and the name that the user sees")},
        {"display-name", C::text(of(&Network::displayName)).alwaysKnown().kept(), QString(),
            "the name that the user sees; the operator if left out"},
        {"mcc", C::text(of(&Network::countryCode), "[0-9]{3}", "three digits").alwaysKnown(),
            QStringLiteral("001"), "its mobile country code"},
        {"mnc", C::text(of(&Network::networkCode), "[0-9]{2,3}", "two or three digits").alwaysKnown(),
            QStringLiteral("01"), "its mobile network code"},
        {"rssi", C::number(of(&Network::signalStrength), -150, -1, "dBm").alwaysKnown(), -85,
            "its signal strength", told("rssi", "DBM", "sets its signal strength")},
        {"services", services,
            QStringList{QStringLiteral("emergency"), QStringLiteral("voice"), QStringLiteral("data")},
            "the services that it offers"},
        {"roaming", C::truth(of(&Network::roams)).alwaysKnown(), false, "whether using it is roaming",
            onOff("roaming", "makes using it roaming, or not")},
        {"suppress", C::truth(of(&Network::suppressesRoaming)), false,
            "whether the roaming is hidden from the user",
            onOff("suppress", "hides the roaming from the user, or shows it")},
        {"cell-id", cell(&Cell::cellId), {}, "the identifier of the cell, in gsm, umts and lte"},
        {"lac", cell(&Cell::locationArea), {}, "the location area, in gsm and umts"},
        {"tac", cell(&Cell::trackingArea), {}, "the tracking area, in lte"},
        {"bid", cell(&Cell::baseStation), {}, "the base station, in cdma_1x and evdo"},
        {"nid", cell(&Cell::network), {}, "the network identifier, in cdma_1x and evdo"},
        {"sid", cell(&Cell::system), {}, "the system identifier, in cdma_1x and evdo"},
    };
    return table;
}

SimulatedNetworks::SimulatedNetworks(const JsonNode &section, SimulatedParts &phone)
    : m_simCard(phone.part<SimulatedSimCard>())
{
    const JsonNode all = givenOrShipped(section, QStringLiteral("cellular-network"), instancesKey());
    for (const auto &member : all.members())
        m_known.push_back(readNetwork(member.first, all.map(member.first)));
    read(section, settings({}), {instancesKey()});
    connect(m_simCard.get(), &SimulatedSimCard::changed, this, &SimulatedNetworks::update);
    update();
}

SimulatedNetworks::Known SimulatedNetworks::readNetwork(const QString &name, const JsonNode &node)
{
    Known known{name, {}, {}};
    const QStringList technologies = wordsIn(technologyWords());
    // It decides which keys there are.
    known.technology = *valueOf(
        technologyWords(), node.word(QStringLiteral("technology"), QStringLiteral("lte"), technologies));
    known.setOperator(name);
    read(node, settingsOf(known));
    if (!node.contains(DisplayName))
        known.network.displayName = known.network.operatorName;
    return known;
}

std::vector<Setting> SimulatedNetworks::settingsOf(Known &known)
{
    std::vector<Setting> settings = networkTable().of(&known);
    std::erase_if(settings, [&known](const Setting &setting) {
        return cellKeys().contains(setting.key) && !cellKeys().value(setting.key).contains(known.technology);
    });
    for (Setting &setting : settings) {
        if (setting.key == u"operator" || setting.key == DisplayName)
            setting.initial = known.name;
    }
    return settings;
}

std::vector<Setting> SimulatedNetworks::settings(const QString &instance)
{
    if (!instance.isEmpty())
        return settingsOf(find(instance));
    // Which networks there are, the file says.
    std::vector<Setting> settings = table().of(this);
    settings.front().type.words = instances();
    settings.front().initial = instances().mid(0, 1);
    return settings;
}

void SimulatedNetworks::Known::setOperator(const QString &called)
{
    network.operatorName = network.displayName = called;
}

QStringList SimulatedNetworks::chosen() const
{
    QStringList names;
    for (const Known &known : m_known) {
        if (known.chosen)
            names.append(known.name);
    }
    return names;
}

void SimulatedNetworks::setChosen(const QStringList &names)
{
    QMap<bool, QString> one; // that is CDMA 1X, and that is not
    for (const QString &name : names) {
        QString &other = one[isCdma1x(find(name))];
        if (!other.isEmpty()) {
            throw WrongSetting(other + QLatin1String(" and ") + name
                + QLatin1String(" cannot serve at once; one beside another is CDMA 1X"));
        }
        other = name;
    }
    for (Known &known : m_known)
        known.chosen = names.contains(known.name);
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
    std::vector<SimVerb> verbs{
        SimVerb::state(
            QStringLiteral("serve"), QStringLiteral("lets it serve, in the place of one of its kind"),
            [this, &known] { choose(known); }, [&known] { return known.chosen; }, QStringLiteral("serving")),
        SimVerb::state(
            QStringLiteral("leave"), QStringLiteral("leaves it"),
            [this, &known] {
                known.chosen = false;
                update();
            },
            [&known] { return !known.chosen; }, QStringLiteral("serving")),
    };
    for (SimVerb &verb : SimulatedPart::verbs(instance))
        verbs.push_back(std::move(verb));
    return verbs;
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
                : QString(wordOf(known.technology) + QLatin1String(" is not enabled")));
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

void SimulatedNetworks::update()
{
    save();
    CellularNetworks state;
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
