#include <oz/EventDelivery.hpp>

#include "base/Errno.hpp"
#include "base/UniqueFd.hpp"
#include "events/EventSources.hpp"
#include "events/ServiceThread.hpp"

#include <QSocketNotifier>

#include <atomic>
#include <csignal>
#include <cstring>
#include <map>
#include <mutex>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

namespace oz {

namespace {

// The connections on which pulses are received.
class PulseConnections
{
public:
    static PulseConnections &instance()
    {
        static auto *const s_instance = new PulseConnections; // outlives whoever sends
        return *s_instance;
    }

    int attach(EventSources::PulseReceiver receiver)
    {
        const std::lock_guard lock(m_mutex);
        m_receivers.emplace(++m_lastId, std::move(receiver));
        return m_lastId;
    }

    void detach(int coid)
    {
        const std::lock_guard lock(m_mutex);
        m_receivers.erase(coid);
    }

    int send(int coid, int code, int value)
    {
        EventSources::PulseReceiver receiver;
        {
            const std::lock_guard lock(m_mutex);
            const auto found = m_receivers.find(coid);
            if (found == m_receivers.end())
                return EBADF;
            receiver = found->second;
        }
        receiver(code, value);
        return 0;
    }

private:
    std::mutex m_mutex;
    std::map<int, EventSources::PulseReceiver> m_receivers;
    int m_lastId = 0;
};

int raiseSignal(const sigevent &event)
{
    if (event.signo < 1 || event.signo > SIGRTMAX)
        return EINVAL;
    siginfo_t info;
    std::memset(&info, 0, sizeof info);
    info.si_signo = event.signo;
    info.si_code = event.code;
    info.si_pid = ::getpid();
    info.si_uid = ::getuid();
    info.si_value.sival_ptr = event.value.sival_ptr;
    long result = ::syscall(SYS_rt_sigqueueinfo, ::getpid(), event.signo, &info);
    if (result < 0 && errno == EPERM) {
        // A code of the kernel's own, which only the process's first thread may use.
        info.si_code = SI_QUEUE;
        result = ::syscall(SYS_rt_sigqueueinfo, ::getpid(), event.signo, &info);
    }
    return result < 0 ? errno : 0;
}

std::atomic<EventSources::HangUp (*)(int fd)> s_judge = nullptr;

EventSources::HangUp judgeHangUp(int fd)
{
    const auto judge = s_judge.load();
    return judge ? judge(fd) : EventSources::HangUp::Final;
}

// The descriptors whose input is waited for, on the service thread.
class ArmedDescriptors
{
public:
    static ArmedDescriptors &instance()
    {
        static auto *const s_instance = new ArmedDescriptors; // outlives the service thread
        return *s_instance;
    }

    enum class Watch { Now, OnceResumed };

    int arm(int fd, const sigevent &event, Watch watch)
    {
        const std::lock_guard lock(m_mutex);
        if (const int error = tryStart())
            return error;
        const quint64 id = ++m_lastId;
        if (watch == Watch::Now) {
            if (const int error = waitFor(fd, id))
                return error;
        }
        disarm(fd);
        m_armed.emplace(id, Armed{fd, event});
        m_ids[fd] = id;
        return 0;
    }

    void forget(int fd)
    {
        const std::lock_guard lock(m_mutex);
        stopWaitingFor(fd);
        disarm(fd);
    }

    void suspend(int fd)
    {
        const std::lock_guard lock(m_mutex);
        stopWaitingFor(fd);
    }

    void resume(int fd)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto found = m_ids.find(fd); found != m_ids.end())
            (void)waitFor(fd, found->second);
    }

private:
    struct Armed
    {
        int fd;
        sigevent event;
    };

    // A start that fails is tried again by the next who arms.
    int tryStart()
    {
        if (m_epoll)
            return 0;
        UniqueFd epoll(::epoll_create1(EPOLL_CLOEXEC));
        ServiceThread *thread = epoll ? ServiceThread::instance() : nullptr;
        if (!thread)
            return errno;
        m_epoll = std::move(epoll);
        thread->post([this](QObject *context) {
            auto *notifier = new QSocketNotifier(m_epoll.get(), QSocketNotifier::Read, context);
            QObject::connect(notifier, &QSocketNotifier::activated, context, [this] { deliverReady(); });
        });
        return 0;
    }

    int waitFor(int fd, quint64 id)
    {
        epoll_event wanted{EPOLLIN | EPOLLRDHUP | EPOLLONESHOT, {.u64 = id}};
        // A descriptor that was closed and opened anew is not known any more, whatever its number was armed
        // for.
        const bool waits = ::epoll_ctl(m_epoll.get(), EPOLL_CTL_MOD, fd, &wanted) == 0
            || (errno == ENOENT && ::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, fd, &wanted) == 0);
        return waits ? 0 : errno;
    }

    void stopWaitingFor(int fd)
    {
        if (m_epoll)
            ::epoll_ctl(m_epoll.get(), EPOLL_CTL_DEL, fd, nullptr);
    }

    void disarm(int fd)
    {
        if (const auto found = m_ids.find(fd); found != m_ids.end()) {
            m_armed.erase(found->second);
            m_ids.erase(found);
        }
    }

    void deliverReady()
    {
        epoll_event ready[16];
        const int count = ::epoll_wait(m_epoll.get(), ready, std::size(ready), 0);
        for (int i = 0; i < count; ++i)
            deliver(ready[i].data.u64);
    }

    void deliver(quint64 id)
    {
        std::unique_lock lock(m_mutex);
        auto found = m_armed.find(id);
        if (found == m_armed.end())
            return;
        const int fd = found->second.fd;
        // Whoever judges has locks of its own, and may suspend and resume.
        lock.unlock();
        const bool isBridged = EventSources::isHungUp(fd) && judgeHangUp(fd) == EventSources::HangUp::Bridged;
        lock.lock();
        found = m_armed.find(id);
        if (found == m_armed.end())
            return;
        if (isBridged) {
            (void)waitFor(fd, id);
            return;
        }
        // Under the lock, so that nothing comes once forget() has returned.
        const Armed armed = found->second;
        disarm(armed.fd);
        (void)EventSources::deliver(armed.event);
    }

    UniqueFd m_epoll;
    std::mutex m_mutex;
    std::map<quint64, Armed> m_armed;
    std::map<int, quint64> m_ids;
    quint64 m_lastId = 0;
};

} // namespace

namespace EventSources {

int attach(PulseReceiver receiver)
{
    return PulseConnections::instance().attach(std::move(receiver));
}

void detach(int coid)
{
    PulseConnections::instance().detach(coid);
}

int deliver(const sigevent &event)
{
    switch (event.notify) {
    case EventKind::None:
        return 0;
    case EventKind::SignalWithCode:
        return raiseSignal(event);
    case EventKind::Pulse:
        return MsgSendPulse_r(event.coid, event.priority, event.code, event.value.sival_int);
    default:
        return EINVAL;
    }
}

void forget(int fd)
{
    ArmedDescriptors::instance().forget(fd);
}

void suspend(int fd)
{
    ArmedDescriptors::instance().suspend(fd);
}

void resume(int fd)
{
    ArmedDescriptors::instance().resume(fd);
}

void judgeHangUps(HangUp (*judge)(int fd))
{
    s_judge = judge;
}

bool isHungUp(int fd)
{
    pollfd state{fd, POLLIN | POLLRDHUP, 0};
    if (::poll(&state, 1, 0) <= 0 || !(state.revents & (POLLRDHUP | POLLHUP | POLLERR)))
        return false;
    int waiting = 0;
    return ::ioctl(fd, FIONREAD, &waiting) == 0 && waiting == 0;
}

} // namespace EventSources

int ionotify(int fd, int action, int flags, const sigevent *event)
{
    if (action != NotifyActionPollArm || flags != NotifyConditionInput || !event)
        return fail(EINVAL);
    pollfd state{fd, POLLIN | POLLRDHUP, 0};
    if (::poll(&state, 1, 0) < 0)
        return -1;
    if (state.revents & POLLNVAL)
        return fail(EBADF);
    using Armed = ArmedDescriptors;
    auto watch = Armed::Watch::Now;
    if (state.revents != 0) {
        if (!EventSources::isHungUp(fd))
            return NotifyConditionInput;
        switch (judgeHangUp(fd)) {
        case EventSources::HangUp::Final:
            return fail(ENODEV);
        case EventSources::HangUp::Bridged:
            break;
        case EventSources::HangUp::Lost:
            watch = Armed::Watch::OnceResumed;
        }
    }
    if (const int error = Armed::instance().arm(fd, *event, watch))
        return fail(error);
    if (watch == Armed::Watch::Now)
        return 0;
    // It may have been resumed before this was armed.
    if (!EventSources::isHungUp(fd))
        EventSources::resume(fd);
    return fail(ENODEV);
}

int MsgDeliverEvent_r(int rcvid, const sigevent *event)
{
    if (!event)
        return EINVAL;
    return rcvid != 0 || event->notify == EventKind::Pulse ? ESRCH : EventSources::deliver(*event);
}

int MsgSendPulse_r(int coid, int, int code, int value)
{
    return PulseConnections::instance().send(coid, code, value);
}

} // namespace oz
