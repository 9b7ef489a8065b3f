#include "ScreenEvent.hpp"

#include "ScreenCall.hpp"

namespace oz::device {

ScreenEvent::ScreenEvent()
{
    if (!callScreen(
            [this] { return screen_create_event(&m_handle); }, "ScreenEvent: failed to create event -"))
        m_handle = nullptr;
}

ScreenEvent::~ScreenEvent()
{
    if (m_handle)
        screen_destroy_event(m_handle);
}

int ScreenEvent::type() const
{
    int type = -1;
    const auto read = [&] { return screen_get_event_property_iv(m_handle, ScreenProperty::Kind, &type); };
    return m_handle && callScreen(read, "ScreenEvent: failed to read type property -") ? type : -1;
}

ScreenDisplay ScreenEvent::display() const
{
    void *display = nullptr;
    const auto read = [&] {
        return screen_get_event_property_pv(m_handle, ScreenProperty::EventDisplay, &display);
    };
    if (!m_handle || !callScreen(read, "ScreenEvent: failed to read display property -"))
        return {};
    return static_cast<screen_display_t>(display);
}

bool ScreenEvent::isAttached() const
{
    int attached = 0;
    const auto read = [&] {
        return screen_get_event_property_iv(m_handle, ScreenProperty::Attached, &attached);
    };
    return m_handle && callScreen(read, "ScreenEvent: failed to read attached property -") && attached != 0;
}

} // namespace oz::device
