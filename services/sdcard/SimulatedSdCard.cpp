#include "sdcard/SimulatedSdCard.hpp"

#include "core/Error.hpp"

namespace oz::services {

SimulatedSdCard::SimulatedSdCard(const JsonNode &section)
{
    section.allowOnly({QStringLiteral("mounted"), QStringLiteral("busy")});
    m_state.mounted = section.boolean(QStringLiteral("mounted"), true);
    m_state.busy = section.boolean(QStringLiteral("busy"), false);
    if (m_state.busy && !m_state.mounted)
        section.fail(QStringLiteral("a card that is not mounted cannot be busy"), QStringLiteral("busy"));
}

std::vector<SimVerb> SimulatedSdCard::verbs(const QString &)
{
    return {
        {QStringLiteral("mount"), {}, QStringLiteral("inserts a card"),
            [this](const QStringList &) { become(true, m_state.busy); }},
        {QStringLiteral("unmount"), {}, QStringLiteral("takes the card out, busy or not"),
            [this](const QStringList &) { become(false, false); }},
        {QStringLiteral("busy"), {}, QStringLiteral("begins to read or write the card"),
            [this](const QStringList &) { become(m_state.mounted, true); }},
        {QStringLiteral("idle"), {}, QStringLiteral("ends reading and writing"),
            [this](const QStringList &) { become(m_state.mounted, false); }},
    };
}

void SimulatedSdCard::become(bool mounted, bool busy)
{
    if (busy && !mounted)
        throw Error(QStringLiteral("no card is mounted that could be busy"));
    m_state = {mounted, busy};
    Q_EMIT changed();
}

} // namespace oz::services
