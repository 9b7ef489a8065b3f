#include "harness/DeviceService.hpp"
#include "harness/Testing.hpp"

#include "powman/PowmanStatus.hpp"

#include <oz/DeviceFile.hpp>
#include <oz/EventService.hpp>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <unistd.h>

using namespace oz::device;
using namespace oz::testing;

namespace {

class PowmanStatusTest : public DeviceTest
{
protected:
    // The value that a handle has once the manager has sent text.
    std::string valueAfter(const QByteArray &text)
    {
        manager.send(text);
        return value();
    }
    std::string value()
    {
        char buffer[256] = "";
        length = powman_status_value(status, sizeof buffer, buffer);
        return buffer;
    }

    DeviceService manager{"/dev/power/mgr"};
    PowmanStatus *status = powman_status_create("user_activity");
    int length = 0;
};

} // namespace

TEST_F(PowmanStatusTest, TheLastCompleteStatusLineIsTheValue)
{
    ASSERT_TRUE(status);
    EXPECT_EQ(manager.takeLine(), "STATUS user_activity");
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    EXPECT_EQ(length, 6);
    EXPECT_EQ(value(), "active"); // nothing new is no error
    EXPECT_EQ(valueAfter("statusa\nother b\nstatus c\n"), " c");
    EXPECT_EQ(valueAfter("statu\n"), " c");
    EXPECT_EQ(valueAfter("statusx\nstatuspart"), "x");
    EXPECT_EQ(valueAfter("ial\n"), "x"); // the part before was dropped
    // 255 bytes a read: the rest is for the next one.
    EXPECT_EQ(valueAfter("status1\n" + QByteArray(247, '.') + "status2\n"), "1");
    EXPECT_EQ(value(), "2");
    EXPECT_EQ(valueAfter(QByteArray(248, '.') + "\nstatus3\n"), "2");
    EXPECT_EQ(value(), "2"); // of the line that two reads cut nothing is left
    char small[4] = {'-', '-', '-', '-'};
    manager.send("statuslong enough\n");
    EXPECT_EQ(powman_status_value(status, 2, small), 11);
    EXPECT_EQ(std::string(small, 4), "lo--");
    EXPECT_EQ(powman_status_value(status, 0, nullptr), 11);
    EXPECT_EQ(powman_status_destroy(status), 0);
}

TEST_F(PowmanStatusTest, ANewStatusDeliversTheEventThatWasAskedFor)
{
    static int s_calls = 0;
    oz::sigevent event;
    ASSERT_EQ(oz::hub_initialize(), 0);
    ASSERT_EQ(oz::hub_add_sigevent_handler(
                  &event, [](void *) { return 0 * ++s_calls; }, nullptr),
        0);
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    EXPECT_EQ(powman_status_notify(status, &event), 0);
    manager.send("statusstandby\n");
    ASSERT_TRUE(waitUntil([] { return s_calls == 1; }));
    // It is still unread, so that the event comes at once.
    EXPECT_EQ(powman_status_notify(status, &event), 0);
    ASSERT_TRUE(waitUntil([] { return s_calls == 2; }));
    EXPECT_EQ(value(), "standby");
    oz::hub_remove_sigevent_handler(&event);
    oz::hub_shutdown();

    static std::atomic<int> s_signals = 0;
    struct sigaction before = {};
    struct sigaction count = {};
    count.sa_handler = [](int) { ++s_signals; };
    ASSERT_EQ(::sigaction(57, &count, &before), 0);
    EXPECT_EQ(powman_status_notify(status, nullptr), 0);
    manager.send("statusactive\n");
    EXPECT_TRUE(waitUntil([] { return s_signals == 1; }));
    ::sigaction(57, &before, nullptr);
    EXPECT_EQ(_powman_deliver_event(&event), 0); // a zeroed record is no event
    event.notify = oz::EventKind::Pulse;
    EXPECT_EQ(_powman_deliver_event(&event), EBADF);
    EXPECT_EQ(powman_status_destroy(status), 0);
}

TEST_F(PowmanStatusTest, ADeviceThatGoesIsAnError)
{
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    manager.stop();
    const oz::sigevent event{};
    EXPECT_EQ(powman_status_notify(status, &event), ENODEV);
    char buffer[16];
    EXPECT_EQ(powman_status_value(status, sizeof buffer, buffer), -ENODEV);
    EXPECT_EQ(powman_status_create("user_activity"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(powman_status_destroy(status), 0);
}

TEST_F(PowmanStatusTest, AManagerThatDoesNotAnswerIsNotWaitedForForever)
{
    EXPECT_EQ(value(), "");
    EXPECT_EQ(length, -ETIMEDOUT);
    EXPECT_EQ(powman_status_destroy(status), 0);
}

TEST_F(PowmanStatusTest, HandlesComeAndGoInAnyOrderAndACloseThatFailsSaysSo)
{
    const auto lowest = [] {
        const int fd = ::dup(2);
        ::close(fd);
        return fd;
    };
    PowmanStatus *second = powman_status_create("second");
    manager.awaitClients(2); // whose descriptors are of this process too
    const int fd = lowest();
    PowmanStatus *third = powman_status_create("third");
    ::close(fd);
    EXPECT_EQ(powman_status_destroy(second), 0);
    EXPECT_EQ(powman_status_destroy(third), EBADF);
    EXPECT_EQ(powman_status_destroy(status), 0);
}
