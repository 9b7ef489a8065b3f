#include "harness/DeviceService.hpp"
#include "harness/Testing.hpp"

#include "powman/PowmanStatus.hpp"

#include <oz/DeviceFile.hpp>
#include <oz/EventService.hpp>

#include <QDir>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <optional>
#include <unistd.h>

using namespace oz::device;
using namespace oz::harness;

namespace {

class PowmanStatusTest : public DeviceTest
{
protected:
    // The value that a handle has once the manager has sent text.
    std::string valueAfter(const QByteArray &text)
    {
        manager->send(text);
        return value();
    }
    std::string value()
    {
        char buffer[256] = "";
        length = powman_status_value(status, sizeof buffer, buffer);
        return buffer;
    }

    std::optional<DeviceService> manager{std::in_place, "/dev/power/mgr"};
    PowmanStatus *status = powman_status_create("user_activity");
    int length = 0;
};

} // namespace

TEST_F(PowmanStatusTest, TheLastCompleteStatusLineIsTheValue)
{
    ASSERT_TRUE(status);
    EXPECT_EQ(manager->takeLine(), "STATUS user_activity");
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    EXPECT_EQ(length, 6);
    // No news is no error, and no answer is outstanding: this many would take minutes.
    const std::chrono::milliseconds answerTimeout(oz::DeviceAnswerTimeout);
    constexpr int times = 100;
    const auto begun = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i)
        EXPECT_EQ(value(), "active");
    EXPECT_LT(std::chrono::steady_clock::now() - begun, times * answerTimeout / 2);
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
    manager->send("statuslong enough\n");
    EXPECT_EQ(powman_status_value(status, 2, small), 11);
    EXPECT_EQ(std::string(small, 4), "lo--");
    EXPECT_EQ(powman_status_value(status, 0, nullptr), 11);
    EXPECT_EQ(powman_status_destroy(status), 0);
}

TEST_F(PowmanStatusTest, ANewStatusDeliversTheEventThatWasAskedFor)
{
    static int s_calls;
    s_calls = 0;
    oz::sigevent event;
    ASSERT_EQ(oz::hub_initialize(), 0);
    ASSERT_EQ(oz::hub_add_sigevent_handler(
                  &event, [](void *) { return 0 * ++s_calls; }, nullptr),
        0);
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    EXPECT_EQ(powman_status_notify(status, &event), 0);
    manager->send("statusstandby\n");
    ASSERT_TRUE(waitUntil([] { return s_calls == 1; }));
    // It is still unread, so that the event comes at once.
    EXPECT_EQ(powman_status_notify(status, &event), 0);
    ASSERT_TRUE(waitUntil([] { return s_calls == 2; }));
    EXPECT_EQ(value(), "standby");
    oz::hub_remove_sigevent_handler(&event);
    oz::hub_shutdown();

    static std::atomic<int> s_signals;
    s_signals = 0;
    struct sigaction before = {};
    struct sigaction count = {};
    count.sa_handler = [](int) { ++s_signals; };
    ASSERT_EQ(::sigaction(57, &count, &before), 0);
    EXPECT_EQ(powman_status_notify(status, nullptr), 0);
    manager->send("statusactive\n");
    EXPECT_TRUE(waitUntil([] { return s_signals == 1; }));
    ::sigaction(57, &before, nullptr);
    EXPECT_EQ(_powman_deliver_event(&event), 0); // a zeroed record is no event
    event.notify = oz::EventKind::Pulse;
    EXPECT_EQ(_powman_deliver_event(&event), EBADF);
    EXPECT_EQ(powman_status_destroy(status), 0);
}

TEST_F(PowmanStatusTest, AHandleOutlivesTheManagerAndIsGoneOnceThatStaysAway)
{
    static int s_calls;
    s_calls = 0;
    oz::sigevent event;
    ASSERT_EQ(oz::hub_initialize(), 0);
    ASSERT_EQ(oz::hub_add_sigevent_handler(
                  &event, [](void *) { return 0 * ++s_calls; }, nullptr),
        0);
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    ASSERT_EQ(powman_status_notify(status, &event), 0);
    const auto isGone = [&](DeviceService::File file) {
        manager->stop(file);
        settle();
        return value() != "active" || powman_status_notify(status, &event) != 0 || s_calls > 0;
    };
    // It comes back with what it was asked for, and with the event that was armed.
    for (const auto file : {DeviceService::File::Removed, DeviceService::File::Left}) {
        EXPECT_FALSE(isGone(file));
        manager.emplace("/dev/power/mgr");
        EXPECT_EQ(manager->takeLine(), "STATUS user_activity");
        manager->send("statusactive\n");
        ASSERT_TRUE(waitUntil([] { return std::exchange(s_calls, 0) == 1; }));
        EXPECT_EQ(value(), "active");
        ASSERT_EQ(powman_status_notify(status, &event), 0);
    }
    QDir(root.file("/dev")).removeRecursively(); // which a service makes anew
    EXPECT_FALSE(isGone(DeviceService::File::Removed));
    manager.emplace("/dev/power/mgr", "statusactive\n");
    ASSERT_TRUE(waitUntil([] { return std::exchange(s_calls, 0) == 1; }));

    qputenv("OZ_GRACE_TIME", "0.05");
    EXPECT_EQ(value(), "active");
    ASSERT_EQ(powman_status_notify(status, &event), 0);
    manager->stop();
    ASSERT_TRUE(waitUntil([] { return std::exchange(s_calls, 0) == 1; }));
    EXPECT_EQ(value(), "");
    EXPECT_EQ(length, -ENODEV);
    EXPECT_EQ(powman_status_notify(status, &event), ENODEV);
    EXPECT_EQ(powman_status_create("user_activity"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    settle();
    EXPECT_EQ(s_calls, 0);
    manager.emplace("/dev/power/mgr", "statusstandby\n");
    ASSERT_TRUE(waitUntil([] { return s_calls == 1; })) << "what could not be armed counts all the same";
    EXPECT_EQ(value(), "standby");
    qunsetenv("OZ_GRACE_TIME");
    EXPECT_EQ(powman_status_destroy(status), 0);
    oz::hub_remove_sigevent_handler(&event);
    oz::hub_shutdown();
}

TEST_F(PowmanStatusTest, AManagerThatEndsTheConnectionIsNotAskedAgain)
{
    EXPECT_EQ(valueAfter("statusactive\n"), "active");
    manager->endConnections();
    EXPECT_TRUE(waitUntil([&] { return value().empty() && length == -ENODEV; }));
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
    manager->awaitClients(2); // whose descriptors are of this process too
    const int fd = lowest();
    PowmanStatus *third = powman_status_create("third");
    ::close(fd);
    EXPECT_EQ(powman_status_destroy(second), 0);
    EXPECT_EQ(powman_status_destroy(third), EBADF);
    EXPECT_EQ(powman_status_destroy(status), 0);
}
