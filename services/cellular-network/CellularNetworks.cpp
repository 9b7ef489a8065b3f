#include "cellular-network/CellularNetworks.hpp"

namespace oz::services {

namespace {

using Network = CellularNetworks::Network;
using Cell = CellularNetworks::Cell;

// One of the networks in use, and what is known of it.
using OneNetwork = std::optional<Network> CellularNetworks::*;

template <typename Value>
auto of(OneNetwork one, std::optional<Value> Network::*member)
{
    return [=](const CellularNetworks &networks) {
        return networks.*one ? (*(networks.*one)).*member : std::nullopt;
    };
}

auto cellOf(OneNetwork one, std::optional<int> Cell::*member)
{
    return [=](const CellularNetworks &networks) {
        return networks.*one ? (*(networks.*one)).cell.*member : std::nullopt;
    };
}

Column<CellularNetworks> services(OneNetwork one)
{
    const auto write = [one](const CellularNetworks &networks) {
        const auto services = of(one, &Network::services)(networks);
        return services ? QVariant(treeBits(*services)) : QVariant();
    };
    const auto read = [](const QVariant &published) {
        return published.isValid() ? QVariant(wordsOf(servicesOfBits(published.toInt()))) : QVariant();
    };
    return Columns<CellularNetworks>::custom({ValueType::List, {}, serviceWords()}, write, read);
}

// The suppression of the roaming indicator is published with the roaming state.
Column<CellularNetworks> suppression(OneNetwork one)
{
    return Columns<CellularNetworks>::truth([one](const CellularNetworks &networks) {
        const auto &network = networks.*one;
        return network && network->roams ? std::optional(network->suppressesRoaming) : std::nullopt;
    });
}

Column<CellularNetworks> emptyMapWith(OneNetwork one)
{
    return Columns<CellularNetworks>::custom({}, [one](const CellularNetworks &networks) {
        return networks.*one ? QVariant(QVariantMap()) : QVariant();
    });
}

Fields<CellularNetworks> networkFields(const QString &path, OneNetwork one, const char *prefix)
{
    using C = Columns<CellularNetworks>;
    const auto named = [prefix](const char *name) -> QByteArray { return QByteArray(prefix) + name; };
    return Fields<CellularNetworks>(path,
        {
            {named("services"), "network_service", services(one), "the services that the network offers now"},
            {named("operator"), "network_name/name", C::text(of(one, &Network::operatorName)),
                "its operator"},
            {named("mcc"), "serving_network/mcc", C::text(of(one, &Network::countryCode)),
                "its mobile country code"},
            {named("mnc"), "serving_network/mnc", C::text(of(one, &Network::networkCode)),
                "its mobile network code"},
            {named("rssi"), "signal_strength/RSSI", C::number(of(one, &Network::signalStrength), "dBm"),
                "its signal strength"},
            {named("roaming"), "roaming/state", C::truth(of(one, &Network::roams), "ROAMING", "HOME"),
                "whether using it is roaming"},
            {named("suppress"), "roaming/suppress", suppression(one),
                "whether the roaming is hidden from the user"},
            {"", "serving_network", emptyMapWith(one), ""},
        });
}

Fields<CellularNetworks> cellFields(const QString &path, OneNetwork one, const char *prefix)
{
    using C = Columns<CellularNetworks>;
    const auto number = [one](std::optional<int> Cell::*member) {
        return C::number(cellOf(one, member)).asPrivate();
    };
    const auto named = [prefix](const char *name) -> QByteArray { return QByteArray(prefix) + name; };
    return Fields<CellularNetworks>(path,
        {
            {named("cell-id"), "serving_network/cell_id", number(&Cell::cellId), "the cell"},
            {named("lac"), "serving_network/lac", number(&Cell::locationArea), "the location area"},
            {named("tac"), "serving_network/tac", number(&Cell::trackingArea), "the tracking area"},
            {named("bid"), "serving_network/bid", number(&Cell::baseStation), "the base station"},
            {named("nid"), "serving_network/nid", number(&Cell::network), "the network"},
            {named("sid"), "serving_network/sid", number(&Cell::system), "the system"},
            {"", "serving_network", emptyMapWith(one), ""},
        },
        0640);
}

} // namespace

const QMap<QString, QList<Technology>> &cellKeys()
{
    using T = Technology;
    static const QMap<QString, QList<T>> keys{
        {QStringLiteral("cell-id"), {T::Gsm, T::Umts, T::Lte}},
        {QStringLiteral("lac"), {T::Gsm, T::Umts}},
        {QStringLiteral("tac"), {T::Lte}},
        {QStringLiteral("bid"), {T::Cdma1x, T::Evdo}},
        {QStringLiteral("nid"), {T::Cdma1x, T::Evdo}},
        {QStringLiteral("sid"), {T::Cdma1x, T::Evdo}},
    };
    return keys;
}

const Fields<CellularNetworks> &primaryNetworkFields()
{
    static const auto fields =
        networkFields(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_public"),
            &CellularNetworks::primary, "");
    return fields;
}

const Fields<CellularNetworks> &primaryCellFields()
{
    static const auto fields =
        cellFields(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_private"),
            &CellularNetworks::primary, "");
    return fields;
}

const Fields<CellularNetworks> &cdma1xNetworkFields()
{
    static const auto fields =
        networkFields(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_cdma_public"),
            &CellularNetworks::cdma1x, "cdma-");
    return fields;
}

const Fields<CellularNetworks> &cdma1xCellFields()
{
    static const auto fields =
        cellFields(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_cdma_private"),
            &CellularNetworks::cdma1x, "cdma-");
    return fields;
}

const Fields<CellularNetworks> &networkNameFields()
{
    static const auto name = [](const CellularNetworks &networks) {
        const auto &named = networks.primary ? networks.primary : networks.cdma1x;
        return named ? named->displayName : std::nullopt;
    };
    static const Fields<CellularNetworks> fields(QStringLiteral("/pps/services/rum/csm/status_public"),
        {
            {"display-name", "network_name", Columns<CellularNetworks>::text(name),
                "the name that the user sees"},
        });
    return fields;
}

} // namespace oz::services
