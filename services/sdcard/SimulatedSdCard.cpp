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
        SimVerb::state(
            QStringLiteral("mount"), QStringLiteral("inserts a card"), [this] { become(true, m_busy); },
            [this] { return m_mounted; }),
        SimVerb::state(
            QStringLiteral("unmount"), QStringLiteral("takes the card out, busy or not"),
            [this] { become(false, false); }, [this] { return !m_mounted; }),
        SimVerb::state(
            Busy, QStringLiteral("begins to read or write the card"), [this] { become(m_mounted, true); },
            [this] { return m_busy; }),
        SimVerb::state(
            QStringLiteral("idle"), QStringLiteral("ends reading and writing"),
            [this] { become(m_mounted, false); }, [this] { return !m_busy; }),
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
