#include "ScreenContext.hpp"

#include "ScreenCall.hpp"
#include "ScreenEvent.hpp"

namespace oz::device {

ScreenContext::ScreenContext()
{
    const auto create = [this] { return screen_create_context(&m_handle, ScreenApplicationContext); };
    if (!callScreen(create, "ScreenContext: failed to create context -"))
        m_handle = nullptr;
}

ScreenContext::~ScreenContext()
{
    if (m_handle)
        screen_destroy_context(m_handle);
}

bool ScreenContext::notify(int type, const void *object, const sigevent *event)
{
    return m_handle
        && callScreen([&] { return screen_notify(m_handle, type, object, event); },
            "ScreenContext: failed to send notification -");
}

bool ScreenContext::readEvent(ScreenEvent &event, int timeout)
{
    return m_handle
        && callScreen([&] { return screen_get_event(m_handle, event.handle(), std::uint64_t(timeout)); },
            "ScreenContext: failed to read screen event -");
}

QList<ScreenDisplay> ScreenContext::displays() const
{
    if (!m_handle)
        return {};
    int count = 0;
    if (!callScreen(
            [&] { return screen_get_context_property_iv(m_handle, ScreenProperty::DisplayCount, &count); },
            "ScreenContext: failed to read display count property -"))
        return {};
    std::vector<void *> handles(std::size_t(count), nullptr);
    if (!callScreen(
            [&] {
                return screen_get_context_property_pv(m_handle, ScreenProperty::Displays, handles.data());
            },
            "ScreenContext: failed to read displays property -"))
        return {};
    QList<ScreenDisplay> displays;
    for (void *handle : handles)
        displays.append(static_cast<screen_display_t>(handle));
    return displays;
}

} // namespace oz::device
