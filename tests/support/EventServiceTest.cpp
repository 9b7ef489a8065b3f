#include "harness/Testing.hpp"

#include <oz/EventService.hpp>

#include <QCoreApplication>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace oz;
using namespace oz::harness;

namespace {

constexpr int Input = NotifyConditionInput;

int arm(int fd, const oz::sigevent &event)
{
    return ionotify(fd, NotifyActionPollArm, Input, &event);
}

// A handler of the event service that counts its calls.
class Counter
{
public:
    Counter()
    {
        EXPECT_EQ(hub_initialize(), 0);
        EXPECT_EQ(hub_add_sigevent_handler(&event, &Counter::call, this), 0);
    }
    ~Counter()
    {
        if (event.notify) {
            EXPECT_EQ(hub_remove_sigevent_handler(&event), 0);
        }
        EXPECT_EQ(hub_shutdown(), 0);
    }
    int send() const { return MsgSendPulse_r(event.coid, 0, event.code, event.value.sival_int); }

    oz::sigevent event;
    std::atomic<int> calls = 0;
    std::atomic<std::thread::id> thread;
    std::function<void()> then;

private:
    static int call(void *data)
    {
        auto *self = static_cast<Counter *>(data);
        self->thread = std::this_thread::get_id();
        ++self->calls;
        if (self->then)
            self->then();
        return 0;
    }
};

// Waits without turning this thread's event loop.
bool waitAside(const std::function<bool()> &condition)
{
    for (int i = 0; i < 4000 && !condition(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return condition();
}

} // namespace

TEST(EventService, InputDeliversTheArmedEventOnce)
{
    Counter counter;
    const int fd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    ASSERT_EQ(arm(fd, counter.event), 0);
    ::eventfd_write(fd, 1);
    ASSERT_TRUE(waitUntil([&] { return counter.calls == 1; }));
    // Input that is there already arms nothing.
    EXPECT_EQ(arm(fd, counter.event), Input);
    eventfd_t value = 0;
    ::eventfd_read(fd, &value);
    ASSERT_EQ(arm(fd, counter.event), 0);
    ::eventfd_write(fd, 1);
    ASSERT_TRUE(waitUntil([&] { return counter.calls == 2; }));
    ::close(fd);
}

TEST(EventService, ADescriptorThatIsClosedAndOpenedAnewTellsOfItselfOnly)
{
    Counter former;
    Counter latter;
    const int fd = ::eventfd(0, EFD_CLOEXEC);
    const int kept = ::dup(fd); // the former one lives on
    ASSERT_EQ(arm(fd, former.event), 0);
    const int other = ::eventfd(0, EFD_CLOEXEC);
    ASSERT_EQ(::dup2(other, fd), fd);
    ASSERT_EQ(arm(fd, latter.event), 0);
    ::eventfd_write(kept, 1);
    ::eventfd_write(other, 1);
    ASSERT_TRUE(waitUntil([&] { return latter.calls == 1; }));
    EXPECT_EQ(former.calls, 0);
    for (const int open : {fd, kept, other})
        ::close(open);
}

TEST(EventService, WhatCannotBeArmedSaysWhy)
{
    const oz::sigevent event{};
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    const auto fails = [&](int fd, int action, int flags, const oz::sigevent *what) {
        errno = 0;
        return ionotify(fd, action, flags, what) == -1 ? errno : 0;
    };
    EXPECT_EQ(fails(pair[0], 1, Input, &event), EINVAL);
    EXPECT_EQ(fails(pair[0], NotifyActionPollArm, 0, &event), EINVAL);
    EXPECT_EQ(fails(pair[0], NotifyActionPollArm, Input, nullptr), EINVAL);
    EXPECT_EQ(fails(12345, NotifyActionPollArm, Input, &event), EBADF);
    // The other side's last words come first.
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    ::close(pair[1]);
    EXPECT_EQ(arm(pair[0], event), Input);
    char last = 0;
    ASSERT_EQ(::read(pair[0], &last, 1), 1);
    EXPECT_EQ(fails(pair[0], NotifyActionPollArm, Input, &event), ENODEV);
    ::close(pair[0]);
}

TEST(EventService, ASignalArrivesWithItsValueAndCode)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, 57);
    sigset_t before;
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &signals, &before), 0);
    oz::sigevent event;
    event.notify = EventKind::SignalWithCode;
    event.signo = 57;
    event.code = -9; // the C library hides -6
    event.value.sival_int = 4711;
    ASSERT_EQ(MsgDeliverEvent_r(0, &event), 0);
    siginfo_t info{};
    const timespec patience{20, 0};
    ASSERT_EQ(::sigtimedwait(&signals, &info, &patience), 57);
    EXPECT_EQ(info.si_value.sival_int, 4711);
    EXPECT_EQ(info.si_code, -9);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(EventService, WhatCannotBeDeliveredSaysWhy)
{
    oz::sigevent event;
    EXPECT_EQ(MsgDeliverEvent_r(0, &event), 0);
    EXPECT_EQ(MsgDeliverEvent_r(0, nullptr), EINVAL);
    EXPECT_EQ(MsgDeliverEvent_r(7, &event), ESRCH);
    event.notify = 99;
    EXPECT_EQ(MsgDeliverEvent_r(0, &event), EINVAL);
    event.notify = EventKind::SignalWithCode;
    event.signo = 1000;
    EXPECT_EQ(MsgDeliverEvent_r(0, &event), EINVAL);
    event.notify = EventKind::Pulse;
    EXPECT_EQ(MsgDeliverEvent_r(0, &event), ESRCH);
    EXPECT_EQ(MsgSendPulse_r(4711, 0, 0, 0), EBADF);
}

TEST(EventService, AHandlerRunsWhereItWasRegistered)
{
    Counter here;
    std::promise<void> done;
    std::thread elsewhere([&] {
        Counter there; // in a thread without an event loop
        EXPECT_EQ(there.send(), 0);
        EXPECT_TRUE(waitAside([&] { return there.calls == 1; }));
        EXPECT_NE(there.thread, std::this_thread::get_id());
        EXPECT_EQ(here.send(), 0);
    });
    elsewhere.join();
    EXPECT_EQ(here.calls, 0);
    ASSERT_TRUE(waitUntil([&] { return here.calls == 1; }));
    EXPECT_EQ(here.thread, std::this_thread::get_id());
}

TEST(EventService, AHandlerMayRemoveItself)
{
    Counter counter;
    counter.then = [&] { EXPECT_EQ(hub_remove_sigevent_handler(&counter.event), 0); };
    const oz::sigevent event = counter.event;
    ASSERT_EQ(counter.send(), 0);
    ASSERT_EQ(counter.send(), 0);
    ASSERT_TRUE(waitUntil([&] { return counter.calls == 1; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.calls, 1);
    EXPECT_EQ(counter.event.notify, EventKind::None);
    // An event that comes late finds nobody, and harms nobody.
    EXPECT_EQ(MsgSendPulse_r(event.coid, 0, event.code, event.value.sival_int), 0);
    oz::sigevent gone = event;
    EXPECT_EQ(hub_remove_sigevent_handler(&gone), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(EventService, RemovingWaitsForAHandlerThatRunsOnAnotherThread)
{
    std::thread([] {
        std::atomic<bool> inside = false;
        std::atomic<bool> removes = false;
        std::atomic<bool> left = false;
        Counter counter;
        counter.then = [&, remover = ::gettid()] {
            inside = true;
            EXPECT_TRUE(waitAside([&] { return removes.load(); }));
            awaitBlocked(remover);
            left = counter.event.notify == EventKind::Pulse; // which it may still use
        };
        ASSERT_EQ(counter.send(), 0);
        ASSERT_EQ(counter.send(), 0);
        ASSERT_TRUE(waitAside([&] { return inside.load(); }));
        removes = true;
        ASSERT_EQ(hub_remove_sigevent_handler(&counter.event), 0);
        EXPECT_TRUE(left);
        EXPECT_EQ(counter.calls, 1);
    }).join();
}

TEST(EventService, OneShutdownTooManyHarmsNobody)
{
    EXPECT_EQ(hub_shutdown(), -1);
    EXPECT_EQ(errno, EINVAL);
    oz::sigevent event;
    EXPECT_EQ(hub_add_sigevent_handler(
                  &event, [](void *) { return 0; }, nullptr),
        -1);
    EXPECT_EQ(errno, ENXIO);

    Counter counter;
    EXPECT_EQ(hub_initialize(), 0);
    for (int i = 0; i < 2; ++i) // one of which was never asked for
        EXPECT_EQ(hub_shutdown(), 0);
    std::thread([] { EXPECT_EQ(hub_shutdown(), -1); }).join();
    ASSERT_EQ(counter.send(), 0);
    ASSERT_TRUE(waitUntil([&] { return counter.calls == 1; }));
    EXPECT_EQ(hub_initialize(), 0);
}

TEST(EventService, AnEventLoopThatDoesNotTurnCollectsOneCallOfAHandler)
{
    Counter counter;
    const PostedCalls posted;
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(counter.send(), 0);
    EXPECT_TRUE(waitUntil([&] { return counter.calls == 1000; }));
    EXPECT_EQ(posted.delivered(), 1);
}

TEST(EventService, AForkedChildEndsThoughItDoesNotHaveTheServicesThread)
{
    const Counter counter;
    const pid_t child = ::fork();
    if (child == 0)
        std::exit(0);
    int status = 0;
    const bool hasEnded = waitUntil([&] { return ::waitpid(child, &status, WNOHANG) == child; });
    EXPECT_TRUE(hasEnded && WIFEXITED(status));
    if (!hasEnded)
        ::kill(child, SIGKILL);
}

// A process in which nobody used the platform before.
TEST(EventServiceDeathTest, WithoutDescriptorsEachFirstUseFailsAndTheNextOneWorks)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto useIt = [] {
        const int fd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        const int next = ::dup(fd);
        ::close(next);
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none{rlim_t(next), limit.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
        const oz::sigevent nothing{};
        const bool failed = arm(fd, nothing) == -1 && std::exchange(errno, 0) == EMFILE
            && arm(fd, nothing) == -1 && std::exchange(errno, 0) == EMFILE && hub_initialize() == -1
            && errno == EMFILE;
        ::setrlimit(RLIMIT_NOFILE, &limit);
        Counter counter;
        const bool armed = arm(fd, counter.event) == 0;
        ::eventfd_write(fd, 1);
        return failed && armed && waitUntil([&] { return counter.calls == 1; }) ? 0 : 1;
    };
    EXPECT_EXIT(std::exit(useIt()), ::testing::ExitedWithCode(0), "");
}

TEST(EventService, ManyRoundsFromManyThreadsReachTheirHandlers)
{
    constexpr int Rounds = 1000;
    Counter here;
    std::array<std::thread, 4> threads;
    for (std::thread &thread : threads) {
        thread = std::thread([&] {
            Counter own;
            for (int round = 0; round < Rounds; ++round) {
                EXPECT_EQ(own.send(), 0);
                EXPECT_EQ(here.send(), 0);
            }
            EXPECT_TRUE(waitAside([&] { return own.calls == Rounds; }));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_TRUE(waitUntil([&] { return here.calls == int(threads.size()) * Rounds; }));
}
