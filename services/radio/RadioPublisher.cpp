#include "radio/RadioPublisher.hpp"

#include "radio/CellularTerms.hpp"

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

RadioPublisher::RadioPublisher(RadioSource &source)
    : m_source(source), m_public(QStringLiteral("/pps/services/cellular/radioctrl/status_public")),
      m_persistent(QStringLiteral("/pps/services/cellular/radioctrl/status_persistent"))
{
    connect(&source, &RadioSource::changed, this, &RadioPublisher::publish);
    publish();
}

void RadioPublisher::publish()
{
    const auto radio = m_source.state();
    if (!radio)
        return;
    m_public.publish({
        {QStringLiteral("power_status"), radio->poweredOn ? QStringLiteral("ON") : QStringLiteral("OFF")},
        {QStringLiteral("provider_capability"),
            QVariantMap{{QStringLiteral("services"), CellularTerms::serviceBits(radio->services)},
                {QStringLiteral("tech"), radio->technologies}}},
        {QStringLiteral("network_technology"), radio->networks},
        {QStringLiteral("band_capability"),
            QVariantMap{{QStringLiteral("cdma"), maskByPlace(radio->bands.cdma, CdmaBands)},
                {QStringLiteral("gsm"), maskByPlace(radio->bands.gsm, GsmBands)},
                {QStringLiteral("umts"), maskByNumber(radio->bands.umts)},
                {QStringLiteral("lte"), maskByNumber(radio->bands.lte)}}},
    });
    m_persistent.publish({{QStringLiteral("configured_technologies"),
        QVariantMap{{QStringLiteral("enabled"), radio->enabledTechnologies}}}});
}

} // namespace oz::services
