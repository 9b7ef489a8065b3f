#pragma once

#include "core/StatePublisher.hpp"
#include "display/DisplaySource.hpp"

#include <memory>

namespace oz::services {

/*! Publishes the displays, as oz::DisplayTree describes it. */
class DisplayPublisher : public QObject
{
public:
    explicit DisplayPublisher(DisplaySource &source);
    /*! Owns its source. */
    explicit DisplayPublisher(std::unique_ptr<DisplaySource> source);

private:
    void publish();

    std::unique_ptr<DisplaySource> m_owned;
    DisplaySource &m_source;
    StatePublisher m_displays;
};

} // namespace oz::services
