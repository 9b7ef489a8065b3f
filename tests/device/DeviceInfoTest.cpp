#include "harness/DeviceService.hpp"
#include "harness/Testing.hpp"

#include <oz/EventService.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/device/DeviceInfo.hpp>

#include <QCoreApplication>
#include <QOrientationSensor>

#include <optional>
#include <thread>

using namespace oz::device;
using namespace oz::harness;

namespace {

class DeviceInfoTest : public DeviceTest
{
protected:
    // Publishes an orientation and gives what is signalled.
    QString turn(const QString &orientation, SignalLog *signalled)
    {
        EXPECT_TRUE(sensor.publish({{"orientation", orientation}}));
        return signalled->settled();
    }

    oz::PpsPublisher sensor{"/pps/services/sensors/orientation"};
};

TEST_F(DeviceInfoTest, EachOrientationOfTheSensorIsSignalledOnceKnown)
{
    const DeviceService manager("/dev/power/mgr", "statusactive\n");
    ASSERT_TRUE(sensor.publish({{"orientation", "top-up"}}));
    DeviceInfo info;
    SignalLog signalled(&info);
    EXPECT_EQ(valuesOf(info), "orientation=TopUp activityState=Active orientationValid=false");
    EXPECT_EQ(signalled.waitFor(1), "orientationValid(true)");
    const std::pair<const char *, const char *> rows[] = {
        {"bottom-up", "orientation(BottomUp) orientation(5)"},
        {"left-up", "orientation(LeftUp) orientation(3)"},
        {"right-up", "orientation(RightUp) orientation(4)"},
        {"face-up", "orientation(FaceUp) orientation(0)"},
        {"face-down", "orientation(FaceDown) orientation(1)"},
        {"top-up", "orientation(TopUp) orientation(2)"},
    };
    for (const auto &[orientation, signalledThen] : rows)
        EXPECT_EQ(turn(orientation, &signalled), signalledThen);
    const QStringList warning{"DeviceInfo: Invalid orientation received from the sensor reading"};
    EXPECT_EQ(turn("undefined", &signalled), "orientationValid(false)");
    EXPECT_EQ(log.take(), warning);
    EXPECT_EQ(turn("head over heels", &signalled), "");
    EXPECT_EQ(log.take(), warning);
    EXPECT_EQ(turn("left-up", &signalled), "orientation(LeftUp) orientation(3) orientationValid(true)");
    root.place(sensor.path(), "rubbish\n");
    EXPECT_EQ(signalled.settled(), "");
    EXPECT_EQ(info.orientation(), DeviceOrientation::LeftUp);
}

TEST_F(DeviceInfoTest, WhereNothingTellsTheOrientationThereIsNoReadingUntilSomethingDoes)
{
    const DeviceService manager("/dev/power/mgr", "statusactive\n");
    DeviceInfo info;
    SignalLog signalled(&info);
    settle();
    EXPECT_FALSE(info.isOrientationValid());
    ASSERT_TRUE(sensor.publish({{"other", 1}}));
    EXPECT_EQ(signalled.settled(), "");
    EXPECT_EQ(turn("left-up", &signalled), "orientation(LeftUp) orientation(3) orientationValid(true)");
    ASSERT_TRUE(sensor.replace({}));
    EXPECT_EQ(signalled.waitFor(1), "orientationValid(false)");
    EXPECT_EQ(log.take(), QStringList{"DeviceInfo: Invalid orientation received from the sensor reading"});
    DeviceInfo later;
    SignalLog signalledLater(&later);
    EXPECT_EQ(signalledLater.settled(), "");
}

TEST_F(DeviceInfoTest, OtherProgramsGetTheOrientationOfTheTreeBeforeAnyOther)
{
    QCoreApplication::addLibraryPath(OZ_PLUGINS);
    const auto identifierOfDefault = [] {
        QOrientationSensor any;
        any.connectToBackend();
        return any.identifier();
    };
    EXPECT_NE(identifierOfDefault(), "ozdevice.orientation");
    ASSERT_TRUE(sensor.publish({{"orientation", "top-up"}}));
    EXPECT_EQ(identifierOfDefault(), "ozdevice.orientation");
}

TEST_F(DeviceInfoTest, EachStatusOfThePowerManagerIsAnActivity)
{
    DeviceService manager("/dev/power/mgr", "statusstandby\n");
    ASSERT_TRUE(sensor.publish({{"orientation", "top-up"}}));
    DeviceInfo info;
    EXPECT_EQ(manager.takeLine(), "STATUS user_activity");
    EXPECT_EQ(info.activityState(), UserActivityState::Inactive);
    SignalLog signalled(&info);
    EXPECT_EQ(signalled.waitFor(1), "orientationValid(true)");
    manager.send("statusactive\n");
    EXPECT_EQ(signalled.waitFor(2), "activityState(Active) activityState(1)");
    manager.send("statusactive again\n");
    EXPECT_EQ(signalled.settled(), "");
    manager.send("statusstandby\n");
    EXPECT_EQ(signalled.waitFor(2), "activityState(Inactive) activityState(2)");
    manager.send("statusasleep\n");
    EXPECT_EQ(signalled.waitFor(2), "activityState(Unknown) activityState(0)");
    EXPECT_EQ(log.take(), QStringList{"DeviceInfo: Unrecognized status value asleep"});
    manager.send("statusactive\n");
    EXPECT_EQ(signalled.waitFor(2), "activityState(Active) activityState(1)");
}

TEST_F(DeviceInfoTest, AManagerThatRestartsIsNotSeenAndOneThatStaysAwayIsUnknownUntilItComes)
{
    std::optional<DeviceService> manager(std::in_place, "/dev/power/mgr", "statusactive\n");
    ASSERT_TRUE(sensor.publish({{"orientation", "top-up"}}));
    DeviceInfo info;
    SignalLog signalled(&info);
    EXPECT_EQ(signalled.waitFor(1), "orientationValid(true)");
    const auto restartWith = [&](const char *status) {
        manager->stop(DeviceService::File::Left);
        EXPECT_EQ(signalled.settled(), "");
        manager.emplace("/dev/power/mgr", status);
    };
    restartWith("statusactive\n");
    restartWith("statusstandby\n");
    EXPECT_EQ(signalled.waitFor(2), "activityState(Inactive) activityState(2)");
    qputenv("OZ_GRACE_TIME", "0.05");
    manager->stop();
    EXPECT_EQ(signalled.waitFor(2), "activityState(Unknown) activityState(0)");
    EXPECT_EQ(log.take(),
        (QStringList{"DeviceInfo: Failed to obtain status No such device",
            "DeviceInfo: Failed to schedule SIGEVENT handler No such device"}));
    manager.emplace("/dev/power/mgr", "statusactive\n");
    EXPECT_EQ(signalled.waitFor(2), "activityState(Active) activityState(1)");
    qunsetenv("OZ_GRACE_TIME");
}

TEST_F(DeviceInfoTest, WithoutPowerManagerTheDefaultsStay)
{
    DeviceInfo info;
    EXPECT_EQ(valuesOf(info), "orientation=TopUp activityState=Unknown orientationValid=false");
    EXPECT_EQ(log.take(), QStringList{"DeviceInfo: Initialization failed"});
    root.place("/dev/power/mgr", "statusactive\n"); // always readable
    EXPECT_EQ(DeviceInfo().activityState(), UserActivityState::Unknown);
    EXPECT_EQ(log.take(),
        (QStringList{"/dev/power/mgr is no device: what lies there is no socket",
            "DeviceInfo: Initialization failed"}));
}

TEST_F(DeviceInfoTest, AThreadWithoutAnEventLoopHasTheActivityAlone)
{
    DeviceService manager("/dev/power/mgr", "statusactive\n");
    ASSERT_TRUE(sensor.publish({{"orientation", "left-up"}}));
    std::thread([&] {
        DeviceInfo info;
        manager.send("statusstandby\n");
        // The event service's own thread takes it in.
        for (int i = 0; i < 4000 && info.activityState() != UserActivityState::Inactive; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(info.activityState(), UserActivityState::Inactive);
    }).join();
    EXPECT_EQ(log.take(),
        QStringList{"DeviceInfo: Tried to start orientation sensor while no event loop is present"});
}

TEST_F(DeviceInfoTest, NothingComesToAnObjectThatIsDestroyed)
{
    DeviceService manager("/dev/power/mgr", "statusactive\n");
    ASSERT_TRUE(sensor.publish({{"orientation", "top-up"}}));
    for (int round = 0; round < 100; ++round) {
        auto info = std::make_unique<DeviceInfo>();
        manager.awaitClients(std::size_t(round) + 1);
        manager.send(round % 2 ? "statusactive\n" : "statusstandby\n");
        if (round % 3)
            QCoreApplication::processEvents();
        info.reset();
        QCoreApplication::processEvents();
    }
    auto *info = new DeviceInfo;
    manager.awaitClients(101);
    EXPECT_TRUE(waitUntil([&] { return info->isOrientationValid(); }));
    EXPECT_TRUE(endsWithSignal(1, info, [&] { manager.send("statusstandby\n"); }));
}

TEST_F(DeviceInfoTest, WithoutTheEventServiceTheActivityIsTheFirstOne)
{
    const DeviceService manager("/dev/power/mgr", "statusactive\n");
    ASSERT_TRUE(sensor.publish({{"orientation", "top-up"}}));
    std::vector<oz::sigevent> all(oz::HubMaxHandlers);
    ASSERT_EQ(oz::hub_initialize(), 0);
    std::thread([&] { // whose handlers need no object each
        for (oz::sigevent &event : all)
            ASSERT_EQ(oz::hub_add_sigevent_handler(
                          &event, [](void *) { return 0; }, nullptr),
                0);
    })
        .join();
    {
        DeviceInfo info;
        EXPECT_EQ(info.activityState(), UserActivityState::Active);
        EXPECT_EQ(log.take(),
            QStringList{
                "DeviceInfo: Failed to register HUB sigevent handler - Resource temporarily unavailable"});
    }
    for (oz::sigevent &event : all)
        oz::hub_remove_sigevent_handler(&event);
    oz::hub_shutdown();
}

} // namespace
