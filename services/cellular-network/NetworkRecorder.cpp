#include "cellular-network/NetworkRecorder.hpp"

#include "cellular-network/CellularNetworks.hpp"

namespace oz::services {

namespace {

const QString Section = QStringLiteral("cellular-network");

// The network that serves, as the phone's file has it; empty where none does.
QVariantMap networkIn(RecordedScript &script)
{
    const auto said = [&](const QByteArray &field) {
        return script.value(Section + u'.' + QLatin1String(field));
    };
    QStringList technologies = script.value(QStringLiteral("radio.technologies")).toStringList();
    if (technologies.size() > 1)
        technologies.removeAll(QStringLiteral("cdma_1x")); // which serves beside
    const QVariant services = said("services");
    if (technologies.isEmpty() || !services.isValid())
        return {};
    QVariantMap network{
        {QStringLiteral("technology"), technologies.first()}, {QStringLiteral("services"), services}};
    for (const char *key : {"operator", "mcc", "mnc", "roaming", "display-name"}) {
        if (const QVariant value = said(key); value.isValid())
            network.insert(QLatin1String(key), value);
    }
    // A modem may tell where it was in a network of another technology, too.
    for (const auto &[key, having] : cellKeys().asKeyValueRange()) {
        const int number = said(key.toLatin1()).toInt();
        if (number != 0 && wordsOf(having).contains(technologies.first()))
            network.insert(key, script.mask().number(key, number));
    }
    return network;
}

} // namespace

// Without a card that is ready, every network offers emergency calls alone.
QString NetworkRecorder::nameOf(const QVariantMap &network, bool isRestricted)
{
    const auto likened = [isRestricted](QVariantMap map) {
        if (isRestricted)
            map.remove(QStringLiteral("services"));
        return map;
    };
    for (const auto &[known, name] : m_networks) {
        if (likened(known) == likened(network))
            return name;
    }
    m_networks.append({network, QStringLiteral("network-%1").arg(m_networks.size() + 1)});
    return m_networks.last().second;
}

void NetworkRecorder::sample(RecordedScript &script, const QStringList &)
{
    const QVariantMap network = networkIn(script);
    if (network.isEmpty()) {
        if (!m_serving.isEmpty())
            script.order({Section, std::exchange(m_serving, {}), QStringLiteral("leave")});
        return;
    }
    const bool isRestricted = script.value(QStringLiteral("simcard.state")) != QLatin1String("ready");
    const QString name = nameOf(network, isRestricted);
    if (script.isBeginning())
        script.setInPhone(Section, QStringLiteral("serving"), QStringList{name});
    QVariantMap networks = script.section(Section).value(QStringLiteral("networks")).toMap();
    if (!networks.contains(name)) {
        networks.insert(name, network);
        script.setInPhone(Section, QStringLiteral("networks"), networks);
    }
    const QVariant strength = script.value(QStringLiteral("cellular-network.rssi"));
    const bool isOther = name != m_serving;
    if (strength.isValid() && strength.toInt() < 0 && (isOther || strength != m_strength)) {
        script.order({Section, name, QStringLiteral("rssi"), QString::number(strength.toDouble(), 'g', 10)});
    }
    if (isOther)
        script.order({Section, name, QStringLiteral("serve")});
    m_serving = name;
    m_strength = strength;
}

} // namespace oz::services
