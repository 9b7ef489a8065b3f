#include "radio/Radio.hpp"

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

// The bands of one kind of network, as a mask.
Column<Radio> bands(QList<int> Radio::Bands::*kind, const std::function<int(const QList<int> &)> &maskOf)
{
    return Columns<Radio>::custom({}, [kind, maskOf](const Radio &radio) {
        return radio.bands ? QVariant(maskOf((*radio.bands).*kind)) : QVariant();
    });
}

} // namespace

const Fields<Radio> &radioFields()
{
    using R = Radio;
    using C = Columns<Radio>;
    static const auto services = [](const Radio &radio) {
        return radio.services ? QVariant(treeBits(*radio.services)) : QVariant();
    };
    static const Fields<Radio> fields(QStringLiteral("/pps/services/cellular/radioctrl/status_public"),
        {
            {"power", "power_status", C::truth(&R::poweredOn, "ON", "OFF"), "whether the radio is on"},
            {"technologies", "network_technology", C::list(&R::networks, technologyWords()),
                "the technologies of the serving networks"},
            {"hardware", "provider_capability/tech", C::list(&R::technologies, technologyWords()),
                "the technologies that the hardware supports"},
            {"", "provider_capability/services", C::custom({}, services), ""},
            {"", "provider_capability", C::constant(QVariantMap()), ""},
            {"", "band_capability/cdma",
                bands(&R::Bands::cdma, [](const auto &all) { return maskByPlace(all, CdmaBands); }), ""},
            {"", "band_capability/gsm",
                bands(&R::Bands::gsm, [](const auto &all) { return maskByPlace(all, GsmBands); }), ""},
            {"", "band_capability/umts", bands(&R::Bands::umts, maskByNumber), ""},
            {"", "band_capability/lte", bands(&R::Bands::lte, maskByNumber), ""},
        });
    return fields;
}

const Fields<Radio> &radioChoiceFields()
{
    using C = Columns<Radio>;
    static const Fields<Radio> fields(QStringLiteral("/pps/services/cellular/radioctrl/status_persistent"),
        {
            {"enabled", "configured_technologies/enabled",
                C::list(&Radio::enabledTechnologies, technologyWords()),
                "the technologies that the user allows"},
            {"", "configured_technologies", C::constant(QVariantMap()), ""},
        });
    return fields;
}

} // namespace oz::services
