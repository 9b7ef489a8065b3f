#include "sdcard/SimulatedSdCard.hpp"

#include "publishing/Error.hpp"

namespace oz::services {

namespace {
const QString Mounted = QStringLiteral("mounted");
const QString Busy = QStringLiteral("busy");
} // namespace

SimulatedSdCard::SimulatedSdCard(const JsonNode &section, SimulatedPhone &)
    : m_mounted(section.boolean(Mounted, true)), m_busy(section.boolean(Busy, false))
{
    section.allowOnly({Mounted, Busy});
    if (m_busy && !m_mounted)
        section.fail(QStringLiteral("a card that is not mounted cannot be busy"), Busy);
    become(m_mounted, m_busy);
}

std::vector<SimVerb> SimulatedSdCard::verbs(const QString &)
{
    return {
        {QStringLiteral("mount"), {}, QStringLiteral("inserts a card"),
            [this](const QStringList &) { become(true, m_busy); }},
        {QStringLiteral("unmount"), {}, QStringLiteral("takes the card out, busy or not"),
            [this](const QStringList &) { become(false, false); }},
        {Busy, {}, QStringLiteral("begins to read or write the card"),
            [this](const QStringList &) { become(m_mounted, true); }},
        {QStringLiteral("idle"), {}, QStringLiteral("ends reading and writing"),
            [this](const QStringList &) { become(m_mounted, false); }},
    };
}

QVariantMap SimulatedSdCard::saved() const
{
    return {{Mounted, m_mounted}, {Busy, m_busy}};
}

void SimulatedSdCard::restore(const QVariantMap &saved)
{
    const bool mounted = saved.value(Mounted).toBool();
    become(mounted, mounted && saved.value(Busy).toBool());
}

void SimulatedSdCard::become(bool mounted, bool busy)
{
    if (busy && !mounted)
        throw Error(QStringLiteral("no card is mounted that could be busy"));
    m_mounted = mounted;
    m_busy = busy;
    save();
    know({mounted, busy});
}

} // namespace oz::services
