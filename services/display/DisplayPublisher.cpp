#include "display/DisplayPublisher.hpp"

#include <oz/DisplayTree.hpp>
#include <oz/Screen.hpp>

namespace oz::services {

namespace {

DisplayTree::Display treeDisplayOf(const DisplayState::Display &display)
{
    return {display.name, display.internal ? ScreenDisplayKind::Internal : ScreenDisplayKind::External,
        display.attached, display.detachable, display.size, display.physicalSize, display.rotation,
        int(display.technology)};
}

} // namespace

DisplayPublisher::DisplayPublisher(
    const QString &facility, DisplaySource &source, Tree &tree, const MiracastSource *miracast)
    : PublisherOf(facility, source, tree), m_miracast(miracast), m_displays(tree, DisplayTree::PpsPath)
{
    declare(m_displays);
    if (miracast)
        connect(miracast, &MiracastSource::changed, this, &DisplayPublisher::republish);
    follow();
}

void DisplayPublisher::publishState(const DisplayState &state)
{
    publishDisplays(state.displays);
}

// Of the device's own displays nothing is known; a session is known all the same.
void DisplayPublisher::publishAbsence()
{
    publishDisplays({});
}

void DisplayPublisher::publishDisplays(Displays displays)
{
    addWireless(&displays);
    DisplayTree::Displays published;
    for (const auto &[id, display] : displays)
        published.emplace(id, treeDisplayOf(display));
    m_displays.publish(DisplayTree::toAttributes(published));
}

void DisplayPublisher::addWireless(Displays *displays)
{
    const auto session = m_miracast && m_miracast->isKnown() ? m_miracast->state() : std::nullopt;
    if (!session || session->connection != MiracastState::Connection::Connected) {
        m_wirelessId.reset();
        return;
    }
    DisplayState::Display wireless;
    wireless.name = wirelessDisplayName(session->sink.name, MaxDisplayNameSize);
    for (const auto &[id, display] : *displays) {
        if (display.name == wireless.name)
            return;
    }
    wireless.attached = wireless.detachable = true;
    wireless.size = session->resolution;
    int id = m_wirelessId.value_or(1);
    while (displays->contains(id))
        ++id;
    m_wirelessId = id;
    displays->emplace(id, wireless);
}

} // namespace oz::services
