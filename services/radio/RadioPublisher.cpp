#include "radio/RadioPublisher.hpp"

#include "radio/CellularWords.hpp"

namespace oz::services {

namespace {

// The lowest bit is the first of these.
const QList<int> CdmaBands{0, 1, 15};
const QList<int> GsmBands{900, 1800, 1900, 850};

int maskByPlace(const QList<int> &bands, const QList<int> &order)
{
    int mask = 0;
    for (qsizetype place = 0; place < order.size(); ++place)
        mask |= bands.contains(order[place]) ? 1 << place : 0;
    return mask;
}

int maskByNumber(const QList<int> &bands)
{
    int mask = 0;
    for (const int band : bands)
        mask |= 1 << (band - 1);
    return mask;
}

} // namespace

RadioPublisher::RadioPublisher(const QString &facility, RadioSource &source, Tree &tree)
    : PublisherOf(facility, source, tree),
      m_public(tree, QStringLiteral("/pps/services/cellular/radioctrl/status_public")),
      m_persistent(tree, QStringLiteral("/pps/services/cellular/radioctrl/status_persistent")),
      m_connections(tree, QStringLiteral("/pps/services/cds/cnice/status"))
{
    declare(m_public);
    declare(m_persistent);
    m_connections.stand();
    follow();
}

void RadioPublisher::publishState(const RadioState &radio)
{
    QVariantMap state;
    if (radio.poweredOn) {
        state.insert(
            QStringLiteral("power_status"), *radio.poweredOn ? QStringLiteral("ON") : QStringLiteral("OFF"));
    }
    QVariantMap capability;
    if (radio.services)
        capability.insert(QStringLiteral("services"), CellularWords::treeBits(*radio.services));
    if (radio.technologies)
        capability.insert(QStringLiteral("tech"), CellularWords::wordsOf(*radio.technologies));
    state.insert(QStringLiteral("provider_capability"), capability);
    if (radio.networks)
        state.insert(QStringLiteral("network_technology"), CellularWords::wordsOf(*radio.networks));
    if (radio.bands) {
        state.insert(QStringLiteral("band_capability"),
            QVariantMap{{QStringLiteral("cdma"), maskByPlace(radio.bands->cdma, CdmaBands)},
                {QStringLiteral("gsm"), maskByPlace(radio.bands->gsm, GsmBands)},
                {QStringLiteral("umts"), maskByNumber(radio.bands->umts)},
                {QStringLiteral("lte"), maskByNumber(radio.bands->lte)}});
    }
    m_public.publish(state);
    QVariantMap configured;
    if (radio.enabledTechnologies)
        configured.insert(QStringLiteral("enabled"), CellularWords::wordsOf(*radio.enabledTechnologies));
    m_persistent.publish({{QStringLiteral("configured_technologies"), configured}});
}

} // namespace oz::services
