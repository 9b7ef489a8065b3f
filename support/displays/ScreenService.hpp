#pragma once

#include <oz/DisplayTree.hpp>
#include <oz/OnceUntilWell.hpp>
#include <oz/Screen.hpp>

#include <QObject>

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>

/*
 * The display service within this process: its contexts, what each has queued, and the displays as they are
 * in the tree.
 */

namespace oz {

class PpsObject;

struct _screen_display
{
    int id = 0;
    DisplayTree::Display state;
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

    /*! True if an event that concerns \a display waits to be taken. */
    [[nodiscard]] bool hasQueued(const _screen_display *display) const;
};

/*! The functions of the service are calls of it, one at a time. They give 0 or an errno. */
class ScreenService
{
public:
    [[nodiscard]] static ScreenService &instance();

    int createContext(screen_context_t *created, int flags);
    int destroyContext(screen_context_t context);

    /*! Runs \a call, which gives an errno, where \a context is one; it may wait with the lock it is given. */
    template <typename Call>
    int withContext(screen_context_t context, const Call &call)
    {
        std::unique_lock lock(m_mutex);
        return m_contexts.contains(context) ? call(lock) : EINVAL;
    }
    /*! Runs \a call, which gives an errno, where \a display is one. */
    template <typename Call>
    int withDisplay(const _screen_display *display, const Call &call)
    {
        const std::lock_guard lock(m_mutex);
        return m_handles.contains(display) ? call() : EINVAL;
    }

private:
    _screen_display &handleOf(_screen_context &context, int id);
    int startWatching();
    void watch(QObject *context);
    int refresh(PpsObject &object);
    void apply(_screen_context &context);
    static void update(
        _screen_context &context, _screen_display &display, const DisplayTree::Display &state, bool listed);
    static void queue(_screen_context &context, _screen_display &display);

    std::mutex m_mutex;
    std::map<screen_context_t, std::unique_ptr<_screen_context>> m_contexts;
    std::set<const _screen_display *> m_handles; // every context's
    DisplayTree::Displays m_displays;
    PpsObject *m_object = nullptr; // the watch, which lives on the service thread; none while it fails
    // Used on the service thread only:
    OnceUntilWell m_watchFailure;
    bool m_retrying = false; // a timer runs that tries again
};

} // namespace oz
