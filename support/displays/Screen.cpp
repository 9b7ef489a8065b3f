#include <oz/Screen.hpp>

#include "base/Errno.hpp"
#include "displays/ScreenService.hpp"
#include "events/EventSources.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace oz {

namespace {

int done(int error)
{
    return error ? fail(error) : 0;
}

int set(int *value, int number)
{
    *value = number;
    return 0;
}

int set(int *value, QSize size)
{
    value[0] = size.width();
    value[1] = size.height();
    return 0;
}

} // namespace

int screen_create_context(screen_context_t *context, int flags)
{
    return done(ScreenService::instance().createContext(context, flags));
}

int screen_destroy_context(screen_context_t context)
{
    return done(ScreenService::instance().destroyContext(context));
}

int screen_get_context_property_iv(screen_context_t context, int property, int *value)
{
    return done(ScreenService::instance().withContext(context, [&](auto &) {
        if (property != ScreenProperty::DisplayCount || !value)
            return EINVAL;
        context->counted = int(std::count_if(context->displays.begin(), context->displays.end(),
            [](const auto &entry) { return entry.second->listed; }));
        return set(value, context->counted);
    }));
}

int screen_get_context_property_pv(screen_context_t context, int property, void **value)
{
    return done(ScreenService::instance().withContext(context, [&](auto &) {
        if (property != ScreenProperty::Displays || (!value && context->counted > 0))
            return EINVAL;
        std::fill_n(value, context->counted, nullptr);
        int next = 0;
        for (const auto &[id, display] : context->displays) {
            if (display->listed && next < context->counted)
                value[next++] = display.get();
        }
        return 0;
    }));
}

int screen_get_display_property_iv(screen_display_t display, int property, int *value)
{
    return done(ScreenService::instance().withDisplay(display, [&] {
        if (!value)
            return EINVAL;
        const DisplayTree::Display &state = display->state;
        switch (property) {
        case ScreenProperty::Id:
            return set(value, display->id);
        case ScreenProperty::Kind:
            return set(value, state.kind);
        case ScreenProperty::Attached:
            return set(value, state.attached);
        case ScreenProperty::Detachable:
            return set(value, state.detachable);
        case ScreenProperty::PhysicalSize:
            return set(value, state.physicalSize);
        case ScreenProperty::Rotation:
            return set(value, state.rotation);
        case ScreenProperty::Size:
            return set(value, state.size);
        case ScreenProperty::Technology:
            return set(value, state.technology);
        default:
            return EINVAL;
        }
    }));
}

int screen_get_display_property_cv(screen_display_t display, int property, int size, char *value)
{
    return done(ScreenService::instance().withDisplay(display, [&] {
        if (property != ScreenProperty::IdString || size < 1 || !value)
            return EINVAL;
        QByteArray name = display->state.name.toUtf8();
        qsizetype length = std::min<qsizetype>(name.size(), size - 1);
        const auto continues = [&](qsizetype place) { return (uchar(name.at(place)) & 0xc0) == 0x80; };
        while (length > 0 && length < name.size() && continues(length))
            --length;
        std::memcpy(value, name.constData(), std::size_t(length));
        value[length] = '\0';
        return 0;
    }));
}

int screen_notify(screen_context_t context, int type, const void *object, const sigevent *event)
{
    return done(ScreenService::instance().withContext(context, [&](auto &) {
        const auto found = std::find_if(context->displays.begin(), context->displays.end(),
            [&](const auto &entry) { return entry.second.get() == object; });
        if (type != ScreenNotifyDisplay || found == context->displays.end())
            return EINVAL;
        const _screen_display *display = found->second.get();
        if (!event) {
            context->notified.erase(display);
            return 0;
        }
        context->notified[display] = *event;
        if (context->hasQueued(display))
            (void)EventSources::deliver(*event);
        return 0;
    }));
}

int screen_create_event(screen_event_t *event)
{
    if (!event)
        return fail(EINVAL);
    *event = new _screen_event;
    return 0;
}

int screen_destroy_event(screen_event_t event)
{
    if (!event)
        return fail(EINVAL);
    delete event;
    return 0;
}

int screen_get_event(screen_context_t context, screen_event_t event, std::uint64_t timeout)
{
    if (!event)
        return fail(EINVAL);
    return done(ScreenService::instance().withContext(context, [&](auto &lock) {
        const auto isQueued = [&] { return !context->queue.empty(); };
        // More than a year is as good as forever, and does not overflow the clock.
        constexpr std::uint64_t Year = 365ULL * 24 * 3600 * 1'000'000'000;
        if (timeout > Year)
            context->queued.wait(lock, isQueued);
        else
            context->queued.wait_for(lock, std::chrono::nanoseconds(timeout), isQueued);
        *event = {};
        if (isQueued()) {
            *event = context->queue.front();
            context->queue.pop_front();
        }
        return 0;
    }));
}

int screen_get_event_property_iv(screen_event_t event, int property, int *value)
{
    if (event && value && property == ScreenProperty::Kind)
        return set(value, event->type);
    if (event && value && property == ScreenProperty::Attached && event->type == ScreenEventType::Display)
        return set(value, event->attached);
    return fail(EINVAL);
}

int screen_get_event_property_pv(screen_event_t event, int property, void **value)
{
    if (!event || !value || property != ScreenProperty::EventDisplay
        || event->type != ScreenEventType::Display)
        return fail(EINVAL);
    *value = event->display;
    return 0;
}

} // namespace oz
