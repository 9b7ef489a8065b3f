#include "cellularnetwork/CellularNetworkPublisher.hpp"

#include "radio/CellularTerms.hpp"

namespace oz::services {

namespace {

QVariantMap publicAttributesOf(const CellularNetworkSource::Network &network)
{
    return {
        {QStringLiteral("network_service"), CellularTerms::serviceBits(network.services)},
        {QStringLiteral("network_name"), QVariantMap{{QStringLiteral("name"), network.operatorName}}},
        {QStringLiteral("serving_network"),
            QVariantMap{
                {QStringLiteral("mcc"), network.countryCode}, {QStringLiteral("mnc"), network.networkCode}}},
        {QStringLiteral("signal_strength"), QVariantMap{{QStringLiteral("RSSI"), network.signalStrength}}},
        {QStringLiteral("roaming"),
            QVariantMap{
                {QStringLiteral("state"), network.roams ? QStringLiteral("ROAMING") : QStringLiteral("HOME")},
                {QStringLiteral("suppress"), network.suppressesRoaming}}},
    };
}

QVariantMap privateAttributesOf(const CellularNetworkSource::Cell &cell)
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

CellularNetworkPublisher::Objects::Objects(const QString &prefix)
    : publicObject(prefix + QLatin1String("_public")), privateObject(prefix + QLatin1String("_private"), 0640)
{
}

void CellularNetworkPublisher::Objects::publish(const std::optional<CellularNetworkSource::Network> &network)
{
    publicObject.publish(network ? publicAttributesOf(*network) : QVariantMap());
    privateObject.publish(network ? privateAttributesOf(network->cell) : QVariantMap());
}

CellularNetworkPublisher::CellularNetworkPublisher(CellularNetworkSource &source)
    : m_source(source), m_primary(QStringLiteral("/pps/services/cellular/radioctrl/status_cell")),
      m_cdma1x(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_cdma")),
      m_settings(QStringLiteral("/pps/services/rum/csm/status_public"))
{
    connect(&source, &CellularNetworkSource::changed, this, &CellularNetworkPublisher::publish);
    publish();
}

void CellularNetworkPublisher::publish()
{
    const auto state = m_source.state();
    if (!state)
        return;
    m_primary.publish(state->primary);
    m_cdma1x.publish(state->cdma1x);
    const auto &named = state->primary ? state->primary : state->cdma1x;
    m_settings.publish(
        named ? QVariantMap{{QStringLiteral("network_name"), named->displayName}} : QVariantMap());
}

} // namespace oz::services
