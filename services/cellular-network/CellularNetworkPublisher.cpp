#include "cellular-network/CellularNetworkPublisher.hpp"

#include "radio/CellularWords.hpp"

namespace oz::services {

namespace {

using Network = CellularNetworkState::Network;

QVariantMap publicAttributesOf(const Network &network)
{
    QVariantMap attributes;
    if (network.services)
        attributes.insert(QStringLiteral("network_service"), CellularWords::treeBits(*network.services));
    if (network.operatorName)
        attributes.insert(
            QStringLiteral("network_name"), QVariantMap{{QStringLiteral("name"), *network.operatorName}});
    QVariantMap codes;
    insertKnown(&codes, QStringLiteral("mcc"), network.countryCode);
    insertKnown(&codes, QStringLiteral("mnc"), network.networkCode);
    attributes.insert(QStringLiteral("serving_network"), codes);
    if (network.signalStrength)
        attributes.insert(QStringLiteral("signal_strength"),
            QVariantMap{{QStringLiteral("RSSI"), *network.signalStrength}});
    if (network.roams) {
        attributes.insert(QStringLiteral("roaming"),
            QVariantMap{{QStringLiteral("state"),
                            *network.roams ? QStringLiteral("ROAMING") : QStringLiteral("HOME")},
                {QStringLiteral("suppress"), network.suppressesRoaming}});
    }
    return attributes;
}

QVariantMap privateAttributesOf(const CellularNetworkState::Cell &cell)
{
    QVariantMap place;
    insertKnown(&place, QStringLiteral("cell_id"), cell.cellId);
    insertKnown(&place, QStringLiteral("lac"), cell.locationArea);
    insertKnown(&place, QStringLiteral("tac"), cell.trackingArea);
    insertKnown(&place, QStringLiteral("bid"), cell.baseStation);
    insertKnown(&place, QStringLiteral("nid"), cell.network);
    insertKnown(&place, QStringLiteral("sid"), cell.system);
    return {{QStringLiteral("serving_network"), place}};
}

} // namespace

CellularNetworkPublisher::Objects::Objects(Tree &tree, const QString &prefix)
    : publicObject(tree, prefix + QLatin1String("_public")),
      privateObject(tree, prefix + QLatin1String("_private"), 0640)
{
}

void CellularNetworkPublisher::Objects::publish(const std::optional<Network> &network)
{
    publicObject.publish(network ? publicAttributesOf(*network) : QVariantMap());
    privateObject.publish(network ? privateAttributesOf(network->cell) : QVariantMap());
}

CellularNetworkPublisher::CellularNetworkPublisher(
    const QString &facility, CellularNetworkSource &source, Tree &tree)
    : PublisherOf(facility, source, tree),
      m_primary(tree, QStringLiteral("/pps/services/cellular/radioctrl/status_cell")),
      m_cdma1x(tree, QStringLiteral("/pps/services/cellular/radioctrl/status_cell_cdma")),
      m_settings(tree, QStringLiteral("/pps/services/rum/csm/status_public"))
{
    for (StatePublisher *object : {&m_primary.publicObject, &m_primary.privateObject, &m_cdma1x.publicObject,
             &m_cdma1x.privateObject, &m_settings})
        declare(*object);
    follow();
}

void CellularNetworkPublisher::publishState(const CellularNetworkState &state)
{
    m_primary.publish(state.primary);
    m_cdma1x.publish(state.cdma1x);
    const auto &named = state.primary ? state.primary : state.cdma1x;
    QVariantMap settings;
    if (named)
        insertKnown(&settings, QStringLiteral("network_name"), named->displayName);
    m_settings.publish(settings);
}

} // namespace oz::services
