#include "sdcard/SimulatedSdCard.hpp"

namespace oz::services {

const Settings<SimulatedSdCard> &SimulatedSdCard::table()
{
    using S = SimulatedSdCard;
    using C = SettingColumns<SimulatedSdCard>;
    static const Settings<SimulatedSdCard> table{
        {"mounted", C::truth(&S::m_mounted).by(&S::setMounted), true, "whether a card is mounted",
            formerly(either("insert", "inserts a card", "remove", "takes the card out, busy or not"),
                {"mount", "unmount"}),
            {"mounted"}},
        {"busy", C::truth(&S::m_busy).by(&S::setBusy), false,
            "whether the card is being read or written; only a mounted one can be",
            either("busy", "begins to read or write the card", "idle", "ends reading and writing"), {"busy"}},
    };
    return table;
}

SimulatedSdCard::SimulatedSdCard(const JsonNode &section, SimulatedParts &)
{
    read(section, settings({}));
    update();
}

void SimulatedSdCard::setMounted(bool mounted)
{
    m_mounted = mounted;
    m_busy = m_busy && mounted;
}

void SimulatedSdCard::setBusy(bool busy)
{
    if (busy && !m_mounted)
        throw WrongSetting(QStringLiteral("a card that is not mounted cannot be busy"));
    m_busy = busy;
}

void SimulatedSdCard::update()
{
    save();
    know({m_mounted, m_busy});
}

} // namespace oz::services
