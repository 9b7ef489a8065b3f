#pragma once

#include "display/DisplaySource.hpp"
#include "miracast/MiracastSource.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*!
 * Publishes the displays, as oz::DisplayTree describes it: those of the source, and the wireless one of a
 * Miracast session, whoever has it. That one is called "miracast-" and its sink's name; a source that shows a
 * display of this name already, as the simulated phone's does, shows the session itself.
 */
class DisplayPublisher final : public PublisherOf<DisplaySource>
{
public:
    /*! Without a \a miracast, there is never a wireless display. */
    DisplayPublisher(
        const QString &facility, DisplaySource &source, Tree &tree, const MiracastSource *miracast);

private:
    using Displays = std::map<int, DisplayState::Display>;

    void publishState(const DisplayState &state) override;
    void publishAbsence() override;
    void publishDisplays(Displays displays);
    void addWireless(Displays *displays);

    const MiracastSource *m_miracast;
    StatePublisher m_displays;
    std::optional<int> m_wirelessId; // of the session's display, while there is one
};

} // namespace oz::services
