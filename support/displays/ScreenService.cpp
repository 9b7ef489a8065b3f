#include "displays/ScreenService.hpp"

#include "base/Log.hpp"
#include "events/EventSources.hpp"
#include "events/ServiceThread.hpp"

#include <oz/PpsObject.hpp>

#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace oz {

using DisplayTree::Display;

namespace {

constexpr std::size_t MaxQueue = 256;
constexpr std::chrono::milliseconds WatchRetryInterval(500);

} // namespace

bool _screen_context::hasQueued(const _screen_display *display) const
{
    return std::any_of(queue.begin(), queue.end(),
        [display](const _screen_event &event) { return event.display == display; });
}

ScreenService &ScreenService::instance()
{
    static auto *const s_instance = new ScreenService; // outlives the service thread
    return *s_instance;
}

int ScreenService::createContext(screen_context_t *created, int flags)
{
    if (!created || flags != ScreenApplicationContext)
        return EINVAL;
    const std::lock_guard lock(m_mutex);
    PpsObject object(DisplayTree::PpsPath);
    if (!object.open(PpsOpenMode::Subscribe))
        return object.error();
    if (const int error = refresh(object))
        return error;
    if (const int error = startWatching())
        return error;
    auto context = std::make_unique<_screen_context>();
    for (const auto &[id, display] : m_displays)
        handleOf(*context, id) = {id, display, true};
    *created = context.get();
    m_contexts.emplace(context.get(), std::move(context));
    return 0;
}

int ScreenService::destroyContext(screen_context_t context)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end())
        return EINVAL;
    for (const auto &[id, display] : context->displays)
        m_handles.erase(display.get());
    m_contexts.erase(found);
    if (ServiceThread *thread = m_contexts.empty() ? ServiceThread::instance() : nullptr)
        thread->post([object = std::exchange(m_object, nullptr)](QObject *) { delete object; });
    return 0;
}

_screen_display &ScreenService::handleOf(_screen_context &context, int id)
{
    auto &display = context.displays[id];
    if (!display) {
        display = std::make_unique<_screen_display>();
        display->id = id;
        m_handles.insert(display.get());
    }
    return *display;
}

int ScreenService::startWatching()
{
    if (m_object)
        return 0;
    ServiceThread *thread = ServiceThread::instance();
    if (!thread)
        return errno;
    thread->post([this](QObject *context) { watch(context); });
    return 0;
}

// On the service thread. Nothing tells when there are descriptors again, so a watch that cannot be had is
// tried anew from time to time, and with each new context.
void ScreenService::watch(QObject *context)
{
    const std::lock_guard lock(m_mutex);
    if (m_object || m_contexts.empty())
        return;
    auto object = std::make_unique<PpsObject>(DisplayTree::PpsPath);
    QObject::connect(object.get(), &PpsObject::readyRead, context, [this] {
        const std::lock_guard reading(m_mutex);
        if (m_object)
            (void)refresh(*m_object);
    });
    if (object->open(PpsOpenMode::Subscribe)) {
        object->setParent(context);
        m_object = object.release();
        m_watchFailure.well();
        return;
    }
    if (m_watchFailure.isNew())
        qCWarning(logSupport) << object->path() << "cannot be watched:" << object->errorString();
    if (!std::exchange(m_retrying, true)) {
        QTimer::singleShot(WatchRetryInterval, context, [this, context] {
            m_retrying = false;
            watch(context);
        });
    }
}

// Reading under the lock keeps readings in the order of what was published.
int ScreenService::refresh(PpsObject &object)
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

void ScreenService::apply(_screen_context &context)
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

void ScreenService::update(
    _screen_context &context, _screen_display &display, const Display &state, bool listed)
{
    const Display before = std::exchange(display.state, state);
    const bool wasAttached = display.listed && before.attached;
    display.listed = listed;
    if (wasAttached != state.attached || before.size != state.size || before.rotation != state.rotation)
        queue(context, display);
}

void ScreenService::queue(_screen_context &context, _screen_display &display)
{
    const _screen_event event{ScreenEventType::Display, &display, display.state.attached};
    const auto last = std::find_if(context.queue.rbegin(), context.queue.rend(),
        [&](const _screen_event &queued) { return queued.display == &display; });
    // Whoever has not taken the former event yet was notified of that, and will find all of them.
    const bool isFirst = last == context.queue.rend();
    if (isFirst || last->attached != event.attached)
        context.queue.push_back(event);
    if (context.queue.size() > MaxQueue)
        context.queue.pop_front();
    context.queued.notify_all();
    const auto notified = context.notified.find(&display);
    if (isFirst && notified != context.notified.end())
        (void)EventSources::deliver(notified->second);
}

} // namespace oz
