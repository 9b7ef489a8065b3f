#include "display/DisplayRecorder.hpp"

#include "display/SimulatedDisplays.hpp"

namespace oz::services {

namespace {

const QString Section = QStringLiteral("display");
const QString Wireless = QStringLiteral("miracast");

QString text(int number)
{
    return QString::number(number);
}

} // namespace

void DisplayRecorder::sample(RecordedScript &script, const QStringList &recorded)
{
    DisplayTree::Displays displays = DisplayTree::fromAttributes(script.told(DisplayTree::PpsPath));
    // A session brings its display with it.
    if (recorded.contains(Wireless))
        std::erase_if(displays, [](const auto &entry) { return entry.second.name.startsWith(Wireless); });
    for (auto &[id, now] : displays) {
        // A session's display is named after the sink.
        if (now.name.startsWith(Wireless)) {
            const QString sink = now.name.sliced(Wireless.size()).trimmed();
            now.name = Wireless + u' ' + script.mask().text(QStringLiteral("sink"), sink);
        }
    }
    if (script.isBeginning()) {
        if (!displays.empty())
            script.setInPhone(Section, SimulatedDisplays::List, SimulatedDisplays::listOf(displays));
    } else {
        for (const auto &[id, before] : m_displays) {
            if (!displays.contains(id)) {
                script.order({Section,
                    before.detachable ? QStringLiteral("remove") : QStringLiteral("detach"), text(id)});
            }
        }
        for (const auto &[id, now] : displays)
            orderChanges(script, id, now);
    }
    m_displays = displays;
}

void DisplayRecorder::orderChanges(RecordedScript &script, int id, const Display &now) const
{
    const auto known = m_displays.find(id);
    const bool isKnown = known != m_displays.end();
    const QString width = text(now.size.width());
    const QString height = text(now.size.height());
    if (!isKnown) {
        script.order({Section, QStringLiteral("add"), text(id), now.name, width, height,
            text(now.physicalSize.width()), text(now.physicalSize.height())});
    } else if (known->second.size != now.size) {
        script.order({Section, QStringLiteral("resize"), text(id), width, height});
    }
    if (now.rotation != (isKnown ? known->second.rotation : 0))
        script.order({Section, QStringLiteral("rotate"), text(id), text(now.rotation)});
    if (now.attached != (isKnown ? known->second.attached : true)) {
        script.order({Section, now.attached ? QStringLiteral("attach") : QStringLiteral("detach"), text(id)});
    }
}

} // namespace oz::services
