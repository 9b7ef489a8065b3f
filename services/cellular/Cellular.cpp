#include "cellular/Cellular.hpp"

namespace oz::services {

namespace {

using Service = CellularService;

constexpr struct
{
    Service service;
    const char *word;
    int treeBit;
} Services[] = {
    {Service::Emergency, "emergency", 0x1},
    {Service::Voice, "voice", 0x2},
    {Service::E911Callback, "e911-callback", 0x4},
    {Service::Data, "data", 0x100},
    {Service::GenericAccess, "generic-access", 0x200},
    {Service::ConcurrentVoiceData, "concurrent-voice-data", 0x400},
    {Service::Gprs, "gprs", 0x1000},
    {Service::Edge, "edge", 0x2000},
    {Service::Umts, "umts", 0x4000},
    {Service::Hspa, "hspa", 0x8000},
    {Service::HspaPlus, "hspa+", 0x10000},
    {Service::Cdma, "cdma", 0x20000},
    {Service::Evdo0, "evdo-0", 0x40000},
    {Service::EvdoA, "evdo-a", 0x80000},
    {Service::Ehrpd, "ehrpd", 0x100000},
    {Service::Lte, "lte", 0x200000},
};

} // namespace

const WordList<Technology> &technologyWords()
{
    static const WordList<Technology> words{
        {Technology::Gsm, "gsm", "gsm"},
        {Technology::Umts, "umts", "umts"},
        {Technology::Cdma1x, "cdma_1x", "cdma_1x"},
        {Technology::Evdo, "evdo", "evdo"},
        {Technology::Lte, "lte", "lte"},
    };
    return words;
}

QString wordOf(Technology technology)
{
    return wordFor(technologyWords(), technology);
}

QStringList wordsOf(const QList<Technology> &technologies)
{
    QStringList words;
    for (const Technology technology : technologies)
        words.append(wordOf(technology));
    return words;
}

QList<Technology> technologiesOf(const QStringList &words)
{
    QList<Technology> found;
    for (const QString &word : words) {
        if (const auto technology = valueOf(technologyWords(), word))
            found.append(*technology);
    }
    return found;
}

QStringList serviceWords()
{
    QStringList words;
    for (const auto &service : Services)
        words.append(QLatin1String(service.word));
    return words;
}

QStringList wordsOf(CellularServices services)
{
    QStringList words;
    for (const auto &service : Services) {
        if (services.testFlag(service.service))
            words.append(QLatin1String(service.word));
    }
    return words;
}

CellularServices servicesOf(const QStringList &words)
{
    CellularServices found;
    for (const auto &service : Services)
        found.setFlag(service.service, words.contains(QLatin1String(service.word)));
    return found;
}

int treeBits(CellularServices services)
{
    int bits = 0;
    for (const auto &service : Services)
        bits |= services.testFlag(service.service) ? service.treeBit : 0;
    return bits;
}

CellularServices servicesOfBits(int treeBits)
{
    CellularServices found;
    for (const auto &service : Services)
        found.setFlag(service.service, (treeBits & service.treeBit) != 0);
    return found;
}

} // namespace oz::services
