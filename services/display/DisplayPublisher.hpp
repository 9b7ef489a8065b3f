#pragma once

#include "display/Displays.hpp"
#include "publishing/Publisher.hpp"

namespace oz::services {

/*!
 * Publishes the displays, as oz::DisplayTree describes it: those of the source, and the one that another
 * facility's source has, unless a display of that name is among them already.
 */
class DisplayPublisher final : public PublisherOf<DisplaySource>
{
public:
    /*! Without a \a beside, there are no displays but the source's. */
    DisplayPublisher(const QString &facility, DisplaySource &source, Tree &tree, const DisplayBeside *beside);

private:
    void publishState(const DisplayState &state) override;
    void publishAbsence() override;
    void publishDisplays(DisplayTree::Displays displays);
    void addBeside(DisplayTree::Displays *displays);

    const DisplayBeside *m_beside;
    StatePublisher m_displays;
    std::optional<int> m_besideId; // of that display, while there is one
};

} // namespace oz::services
