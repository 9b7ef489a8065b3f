#include <oz/Screen.hpp>

#include "base/Errno.hpp"
#include "base/Log.hpp"
#include "events/EventSources.hpp"
#include "events/ServiceThread.hpp"

#include <oz/DisplayTree.hpp>
#include <oz/PpsObject.hpp>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>

namespace oz {

using DisplayTree::Display;
using DisplayTree::Displays;

struct _screen_display
{
    int id = 0;
    Display state;
    bool listed = false;
};

struct _screen_event
{
    int type = ScreenEventType::None;
    screen_display_t display = nullptr;
    bool attached = false;
};

struct _screen_context
{
    std::map<int, std::unique_ptr<_screen_display>> displays;
    int counted = 0; // by the last DisplayCount
    std::deque<_screen_event> queue;
    std::condition_variable queued;
    std::map<const _screen_display *, sigevent> notified;
};

namespace {

constexpr std::size_t MaxQueue = 256;

// All contexts of the process, and the displays as they are in the tree. The functions of the service are
// calls of it, one at a time.
class DisplayService
{
public:
    static DisplayService &instance()
    {
        static auto *const s_instance = new DisplayService; // outlives the service thread
        return *s_instance;
    }

    int createContext(screen_context_t *created, int flags)
    {
        if (!created || flags != ScreenApplicationContext)
            return EINVAL;
        const std::lock_guard lock(m_mutex);
        PpsObject object(DisplayTree::PpsPath);
        if (!object.open(PpsOpenMode::Subscribe))
            return object.error();
        if (const int error = refresh(object))
            return error;
        if (m_contexts.empty()) {
            ServiceThread *thread = ServiceThread::instance();
            if (!thread)
                return errno;
            thread->post([this](QObject *context) { watch(context); });
        }
        auto context = std::make_unique<_screen_context>();
        for (const auto &[id, display] : m_displays)
            handleOf(*context, id) = {id, display, true};
        *created = context.get();
        m_contexts.emplace(context.get(), std::move(context));
        return 0;
    }

    int destroyContext(screen_context_t context)
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_contexts.find(context);
        if (found == m_contexts.end())
            return EINVAL;
        for (const auto &[id, display] : context->displays)
            m_handles.erase(display.get());
        m_contexts.erase(found);
        if (m_contexts.empty()) {
            ServiceThread::instance()->post(
                [object = std::exchange(m_object, nullptr)](QObject *) { delete object; });
        }
        return 0;
    }

    // Runs call, which gives an errno, with a context or display that is one.
    template <typename Call>
    int withContext(screen_context_t context, const Call &call)
    {
        std::unique_lock lock(m_mutex);
        return m_contexts.contains(context) ? call(lock) : EINVAL;
    }
    template <typename Call>
    int withDisplay(const _screen_display *display, const Call &call)
    {
        const std::lock_guard lock(m_mutex);
        return m_handles.contains(display) ? call() : EINVAL;
    }

private:
    _screen_display &handleOf(_screen_context &context, int id)
    {
        auto &display = context.displays[id];
        if (!display) {
            display = std::make_unique<_screen_display>();
            display->id = id;
            m_handles.insert(display.get());
        }
        return *display;
    }

    // On the service thread.
    void watch(QObject *context)
    {
        const std::lock_guard lock(m_mutex);
        if (m_object || m_contexts.empty())
            return;
        m_object = new PpsObject(DisplayTree::PpsPath, context);
        QObject::connect(m_object, &PpsObject::readyRead, context, [this] {
            const std::lock_guard reading(m_mutex);
            if (m_object)
                (void)refresh(*m_object);
        });
        if (!m_object->open(PpsOpenMode::Subscribe))
            qCWarning(logSupport) << m_object->path() << "cannot be watched:" << m_object->errorString();
    }

    // Reading under the lock keeps readings in the order of what was published.
    int refresh(PpsObject &object)
    {
        bool ok = false;
        const QByteArray text = object.read(&ok);
        if (!ok)
            return object.error();
        const QVariantMap message = PpsObject::decode(text, &ok);
        if (!ok)
            return EBADMSG;
        m_displays = DisplayTree::fromAttributes(message.first().toMap());
        for (auto &[context, owned] : m_contexts)
            apply(*context);
        return 0;
    }

    void apply(_screen_context &context)
    {
        for (const auto &[id, display] : m_displays)
            update(context, handleOf(context, id), display, true);
        for (auto &[id, display] : context.displays) {
            if (!m_displays.contains(id)) {
                Display removed = display->state;
                removed.attached = false;
                update(context, *display, removed, false);
            }
        }
    }

    static void update(_screen_context &context, _screen_display &display, const Display &state, bool listed)
    {
        const Display before = std::exchange(display.state, state);
        const bool wasAttached = display.listed && before.attached;
        display.listed = listed;
        if (wasAttached != state.attached || before.size != state.size || before.rotation != state.rotation)
            queue(context, display);
    }

    static void queue(_screen_context &context, _screen_display &display)
    {
        const _screen_event event{ScreenEventType::Display, &display, display.state.attached};
        const auto last = std::find_if(context.queue.rbegin(), context.queue.rend(),
            [&](const _screen_event &queued) { return queued.display == &display; });
        if (last == context.queue.rend() || last->attached != event.attached)
            context.queue.push_back(event);
        if (context.queue.size() > MaxQueue)
            context.queue.pop_front();
        context.queued.notify_all();
        if (const auto notified = context.notified.find(&display); notified != context.notified.end())
            (void)EventSources::deliver(notified->second);
    }

    std::mutex m_mutex;
    std::map<screen_context_t, std::unique_ptr<_screen_context>> m_contexts;
    std::set<const _screen_display *> m_handles; // of all contexts
    Displays m_displays;
    PpsObject *m_object = nullptr; // lives on the service thread
};

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
    return done(DisplayService::instance().createContext(context, flags));
}

int screen_destroy_context(screen_context_t context)
{
    return done(DisplayService::instance().destroyContext(context));
}

int screen_get_context_property_iv(screen_context_t context, int property, int *value)
{
    return done(DisplayService::instance().withContext(context, [&](auto &) {
        if (property != ScreenProperty::DisplayCount || !value)
            return EINVAL;
        context->counted = int(std::count_if(context->displays.begin(), context->displays.end(),
            [](const auto &entry) { return entry.second->listed; }));
        return set(value, context->counted);
    }));
}

int screen_get_context_property_pv(screen_context_t context, int property, void **value)
{
    return done(DisplayService::instance().withContext(context, [&](auto &) {
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
    return done(DisplayService::instance().withDisplay(display, [&] {
        if (!value)
            return EINVAL;
        const Display &state = display->state;
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
    return done(DisplayService::instance().withDisplay(display, [&] {
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
    return done(DisplayService::instance().withContext(context, [&](auto &) {
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
        if (std::any_of(context->queue.begin(), context->queue.end(),
                [&](const _screen_event &queued) { return queued.display == display; }))
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
    return done(DisplayService::instance().withContext(context, [&](auto &lock) {
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
