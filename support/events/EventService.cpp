#include <oz/EventService.hpp>

#include "base/Errno.hpp"
#include "events/EventSources.hpp"
#include "events/ServiceThread.hpp"

#include <QAbstractEventDispatcher>
#include <QObject>
#include <QThread>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace oz {

namespace {

class EventService
{
public:
    static EventService &instance()
    {
        static auto *const s_instance = new EventService; // outlives the service thread
        return *s_instance;
    }

    int initialize()
    {
        const std::lock_guard lock(m_mutex);
        if (!ServiceThread::instance())
            return -1;
        ++m_users;
        attach();
        return 0;
    }

    void shutdown()
    {
        const std::lock_guard lock(m_mutex);
        --m_users;
        detachIfUnused();
    }

    int add(sigevent *event, HubHandler call, void *data)
    {
        if (!event || !call)
            return fail(EINVAL);
        const std::lock_guard lock(m_mutex);
        if (m_coid == 0)
            return fail(ENXIO);
        if (m_handlers.size() >= std::size_t(HubMaxHandlers))
            return fail(EAGAIN);
        auto handler = std::make_shared<Handler>();
        handler->call = call;
        handler->data = data;
        if (QAbstractEventDispatcher::instance())
            handler->home = new QObject;
        m_handlers.emplace(++m_lastId, handler);
        *event = {};
        event->notify = EventKind::Pulse;
        event->coid = m_coid;
        event->value.sival_int = m_lastId;
        return 0;
    }

    int remove(sigevent *event)
    {
        if (!event)
            return fail(EINVAL);
        std::unique_lock lock(m_mutex);
        const auto found = m_handlers.find(event->value.sival_int);
        if (event->notify != EventKind::Pulse || event->coid != m_coid || found == m_handlers.end())
            return fail(ENOENT);
        const std::shared_ptr<Handler> handler = found->second;
        m_handlers.erase(found);
        detachIfUnused();
        m_returned.wait(
            lock, [&] { return handler->depth == 0 || handler->thread == std::this_thread::get_id(); });
        // Not before: a handler that is under way may be using it.
        *event = {};
        // Its own call may still be under way on this object.
        if (handler->home && handler->depth == 0 && handler->home->thread() == QThread::currentThread())
            delete handler->home;
        else if (handler->home)
            handler->home->deleteLater();
        return 0;
    }

private:
    struct Handler
    {
        HubHandler call = nullptr;
        void *data = nullptr;
        QObject *home = nullptr; // lives on the thread whose event loop calls; none for the service's own
        int waiting = 0; // deliveries that are still to be calls
        bool isPosted = false; // one that stands in the event loop's queue for all of them
        int depth = 0; // nested calls under way, all on one thread
        std::thread::id thread;
    };

    void attach()
    {
        if (m_coid == 0)
            m_coid = EventSources::attach([this](int, int value) { onPulse(value); });
    }

    void detachIfUnused()
    {
        if (m_users == 0 && m_handlers.empty() && m_coid != 0)
            EventSources::detach(std::exchange(m_coid, 0));
    }

    void onPulse(int id)
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_handlers.find(id);
        if (found == m_handlers.end())
            return;
        ++found->second->waiting;
        postCall(found->second.get(), id);
    }

    // Under the lock, which keeps the handler's home alive.
    void postCall(Handler *handler, int id)
    {
        if (std::exchange(handler->isPosted, true))
            return;
        if (QObject *home = handler->home)
            QMetaObject::invokeMethod(
                home, [this, id] { run(id); }, Qt::QueuedConnection);
        else if (ServiceThread *thread = ServiceThread::instance())
            thread->post([this, id](QObject *) { run(id); });
    }

    void run(int id)
    {
        std::unique_lock lock(m_mutex);
        const auto found = m_handlers.find(id);
        if (found == m_handlers.end())
            return;
        const std::shared_ptr<Handler> handler = found->second;
        handler->isPosted = false;
        // An event that comes meanwhile waits for its turn, as it would behind other events.
        for (int turns = handler->waiting; turns > 0 && handler->waiting > 0 && m_handlers.contains(id);
             --turns) {
            // For an event loop that the handler runs.
            if (--handler->waiting > 0)
                postCall(handler.get(), id);
            ++handler->depth;
            handler->thread = std::this_thread::get_id();
            lock.unlock();
            (void)handler->call(handler->data);
            lock.lock();
            --handler->depth;
            m_returned.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_returned;
    std::map<int, std::shared_ptr<Handler>> m_handlers;
    int m_users = 0;
    int m_coid = 0; // 0 while nobody uses the service
    int m_lastId = 0;
};

// The uses of one thread, so that taking back one too many is nobody else's loss. A thread that ends takes
// back what it has left.
class Uses
{
public:
    ~Uses()
    {
        while (m_count > 0)
            (void)drop();
    }
    int add()
    {
        if (EventService::instance().initialize() < 0)
            return -1;
        ++m_count;
        return 0;
    }
    int drop()
    {
        if (m_count == 0)
            return fail(EINVAL);
        --m_count;
        EventService::instance().shutdown();
        return 0;
    }

private:
    int m_count = 0;
};

thread_local Uses t_uses;

} // namespace

int hub_initialize()
{
    return t_uses.add();
}

int hub_shutdown()
{
    return t_uses.drop();
}

int hub_add_sigevent_handler(sigevent *event, HubHandler handler, void *data)
{
    return EventService::instance().add(event, handler, data);
}

int hub_remove_sigevent_handler(sigevent *event)
{
    return EventService::instance().remove(event);
}

} // namespace oz
