#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>

#include <QCoreApplication>

#include <csignal>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace oz;
using namespace oz::harness;

namespace {

const QString Path = "/pps/services/box/status";

// Begins and ends what is counted.
void mark()
{
    ::syscall(SYS_getpgid, -1);
}

// Calls of an allocator or a sanitizer do not count.
bool isOverhead(std::uint64_t call)
{
    for (const long one :
        {SYS_brk, SYS_mmap, SYS_munmap, SYS_mprotect, SYS_madvise, SYS_futex, SYS_rt_sigprocmask})
        if (call == std::uint64_t(one))
            return true;
    return false;
}

// The system calls of a child process between its two marks.
std::vector<std::uint64_t> callsOf(const std::function<void()> &body)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        body();
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    std::vector<std::uint64_t> calls;
    int marks = 0;
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL), 0);
    while (WIFSTOPPED(status)) {
        const int signal = WSTOPSIG(status);
        __ptrace_syscall_info info{};
        if (signal == (SIGTRAP | 0x80) && ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) > 0
            && info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            if (info.entry.nr == SYS_getpgid)
                ++marks;
            else if (marks == 1 && !isOverhead(info.entry.nr))
                calls.push_back(info.entry.nr);
        }
        const bool isOurs = signal == SIGSTOP || signal == (SIGTRAP | 0x80);
        if (::ptrace(PTRACE_SYSCALL, child, nullptr, isOurs ? 0 : signal) < 0
            || ::waitpid(child, &status, 0) < 0)
            break;
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(marks, 2);
    return calls;
}

using PpsSystemCallsTest = DeviceTest;

TEST_F(PpsSystemCallsTest, APublishOfARunningServiceIsNineAndOfNothingNewOne)
{
    const auto publishes = [](int value) {
        return callsOf([=] {
            PpsPublisher publisher(Path);
            ASSERT_TRUE(publisher.publish({{"a", 0}}) && publisher.publish({{"a", 1}, {"b", "x"}}));
            mark();
            const bool done = publisher.publish({{"a", value}});
            mark();
            EXPECT_TRUE(done);
        });
    };
    const std::vector<std::uint64_t> changed = publishes(2);
    EXPECT_EQ(attributesOf(Path).value("a"), 2);
    EXPECT_LE(changed.size(), 9) << ::testing::PrintToString(changed);
    EXPECT_GE(changed.size(), 5) << "a file is opened, locked, written, renamed and closed";
    const std::vector<std::uint64_t> same = publishes(1);
    EXPECT_LE(same.size(), 1) << ::testing::PrintToString(same);
}

TEST_F(PpsSystemCallsTest, ANotificationWithItsReadIsSix)
{
    for (const char *options : {"", "?f=a", "?delta"}) {
        const std::vector<std::uint64_t> calls = callsOf([=] {
            PpsPublisher publisher(Path);
            ASSERT_TRUE(publisher.replace({{"a", 1}, {"b", 2}}));
            PpsObject object(Path + options);
            int wakes = 0;
            QByteArray last;
            QObject::connect(&object, &PpsObject::readyRead, [&] {
                ++wakes;
                last = object.read();
            });
            ASSERT_TRUE(object.open(PpsOpenMode::Subscribe));
            for (int i = 2; wakes < 2; ++i) {
                ASSERT_TRUE(publisher.publish({{"a", i}}));
                QCoreApplication::processEvents();
            }
            ASSERT_TRUE(publisher.publish({{"a", 0}}));
            const int before = wakes;
            mark();
            QCoreApplication::processEvents();
            mark();
            EXPECT_EQ(wakes, before + 1);
            EXPECT_TRUE(last.contains("a:n:0\n"));
        });
        EXPECT_LE(calls.size(), 6) << options << ::testing::PrintToString(calls);
        EXPECT_GE(calls.size(), 5) << "the event is read, and a file opened, read and closed";
    }
}

} // namespace
