#include "display/DisplayPublisher.hpp"

namespace oz::services {

DisplayPublisher::DisplayPublisher(DisplaySource &source) : m_source(source), m_displays(DisplayTree::PpsPath)
{
    connect(&source, &DisplaySource::changed, this, &DisplayPublisher::publish);
    publish();
}

DisplayPublisher::DisplayPublisher(std::unique_ptr<DisplaySource> source) : DisplayPublisher(*source)
{
    m_owned = std::move(source);
}

void DisplayPublisher::publish()
{
    if (const auto displays = m_source.displays())
        m_displays.publish(DisplayTree::toAttributes(*displays));
}

} // namespace oz::services
