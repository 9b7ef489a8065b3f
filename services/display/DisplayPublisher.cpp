#include "display/DisplayPublisher.hpp"

#include <algorithm>

namespace oz::services {

DisplayPublisher::DisplayPublisher(
    const QString &facility, DisplaySource &source, Tree &tree, const DisplayBeside *beside)
    : PublisherOf(facility, source, tree), m_beside(beside), m_displays(tree, DisplayTree::PpsPath)
{
    declare(m_displays);
    if (beside)
        connect(&beside->source(), &Source::changed, this, &DisplayPublisher::republish);
    follow();
}

void DisplayPublisher::publishState(const DisplayState &state)
{
    publishDisplays(state.displays);
}

// The device's own displays are unknown; one that another facility adds is known all the same.
void DisplayPublisher::publishAbsence()
{
    publishDisplays({});
}

void DisplayPublisher::publishDisplays(DisplayTree::Displays displays)
{
    addBeside(&displays);
    m_displays.publish(DisplayTree::toAttributes(displays));
}

void DisplayPublisher::addBeside(DisplayTree::Displays *displays)
{
    const auto display = m_beside ? m_beside->displayNow() : std::nullopt;
    if (!display) {
        m_besideId.reset();
        return;
    }
    const bool isThere = std::any_of(displays->begin(), displays->end(),
        [&](const auto &entry) { return entry.second.name == display->name; });
    if (isThere)
        return;
    int id = m_besideId.value_or(1);
    while (displays->contains(id))
        ++id;
    m_besideId = id;
    displays->emplace(id, *display);
}

} // namespace oz::services
