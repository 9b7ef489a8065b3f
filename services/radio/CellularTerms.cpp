#include "radio/CellularTerms.hpp"

namespace oz::services {

namespace {

constexpr struct
{
    const char *word;
    int bit;
} Services[] = {
    {"emergency", 0x1},
    {"voice", 0x2},
    {"e911-callback", 0x4},
    {"data", 0x100},
    {"generic-access", 0x200},
    {"concurrent-voice-data", 0x400},
    {"gprs", 0x1000},
    {"edge", 0x2000},
    {"umts", 0x4000},
    {"hspa", 0x8000},
    {"hspa+", 0x10000},
    {"cdma", 0x20000},
    {"evdo-0", 0x40000},
    {"evdo-a", 0x80000},
    {"ehrpd", 0x100000},
    {"lte", 0x200000},
};

} // namespace

QStringList CellularTerms::technologies()
{
    return {QStringLiteral("gsm"), QStringLiteral("umts"), QStringLiteral("cdma_1x"), QStringLiteral("evdo"),
        QStringLiteral("lte")};
}

QStringList CellularTerms::services()
{
    QStringList words;
    for (const auto &service : Services)
        words.append(QLatin1String(service.word));
    return words;
}

int CellularTerms::serviceBits(const QStringList &services)
{
    int bits = 0;
    for (const auto &service : Services)
        bits |= services.contains(QLatin1String(service.word)) ? service.bit : 0;
    return bits;
}

} // namespace oz::services
