#include "services/Rigs.hpp"
#include "services/Services.hpp"

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/SdCardInfo.hpp>

// The particulars of a real device's services, beyond the requirements on every source.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

template <typename RigType>
class TestOver : public RigTest
{
protected:
    TestOver() : RigTest(std::make_unique<RigType>()), service(static_cast<RigType &>(*rig)) { }

    RigType &service;
};

using UDisksTest = TestOver<UDisksRig>;
using UPowerTest = TestOver<UPowerRig>;
using NetworkManagerTest = TestOver<NetworkManagerRig>;
using LinuxHardwareTest = TestOver<HardwareRig>;
using LogindTest = TestOver<LogindRig>;
using SensorProxyTest = TestOver<SensorRig>;

TEST_F(UDisksTest, IsBusyWhileTheKernelReadsItAndGoneWhenItIsPulled)
{
    service.start();
    startDaemon();
    SdCardInfo card;
    SignalLog heard(&card);
    for (const char *expected : {"activity(Busy) activity(2)", "activity(Idle) activity(1)"}) {
        service.readCard(card.activity() == SdCardActivity::Idle);
        EXPECT_EQ(heard.waitFor(2), expected);
    }
    service.readCard(true);
    EXPECT_EQ(heard.waitFor(2), "activity(Busy) activity(2)");
    service.pullCard();
    EXPECT_EQ(heard.waitFor(4), "state(Unmounted) state(2) activity(Idle) activity(1)");
    EXPECT_EQ(sourceOf("sdcard"), "known");
}

TEST_F(UDisksTest, AKernelThatHangsHoldsNothingElseUp)
{
    service.start();
    startDaemon();
    service.hangKernel();
    sim("battery level 33");
    EXPECT_EQ(BatteryInfo().level(), 33);
}

TEST_F(UPowerTest, AKernelThatHangsHoldsNoNewsOfTheServiceBack)
{
    service.start();
    startDaemon();
    const BatteryInfo battery;
    EXPECT_EQ(battery.level(), UPowerRig::FirstLevel);
    service.hangKernel();
    for (const int level : {70, 60, 50}) {
        service.setLevel(level);
        EXPECT_TRUE(waitUntil([&] { return battery.level() == level; })) << level;
    }
    EXPECT_EQ(battery.condition(), BatteryCondition::OK) << "what the kernel told last";
}

TEST_F(NetworkManagerTest, AConnectionThatGoesDownIsNoneThatComesUp)
{
    service.start();
    startDaemon();
    const CellularDataInterface internet("Internet--Home-");
    service.change(true);
    EXPECT_TRUE(waitUntil([&] { return internet.connectionState() == CellularConnectionState::Connected; }));
    service.goDown();
    EXPECT_TRUE(
        waitUntil([&] { return internet.connectionState() == CellularConnectionState::Disconnected; }));
}

TEST_F(UDisksTest, IsBusyWhileAJobIsUnderWay)
{
    service.allowAll();
    service.mount("");
    service.start();
    startDaemon();
    SdCardInfo card;
    SignalLog heard(&card);
    service.startJob();
    EXPECT_EQ(heard.waitFor(2), "activity(Busy) activity(2)");
    service.endJob();
    EXPECT_EQ(heard.waitFor(2), "activity(Idle) activity(1)");
}

TEST_F(UDisksTest, IsNotWhatTheSystemStandsOnUnlessItIsNamed)
{
    service.mount("/boot/firmware");
    service.start();
    startDaemon();
    SdCardInfo card;
    EXPECT_EQ(card.state(), SdCardState::Unmounted);
    daemon.terminate();
    EXPECT_TRUE(daemon.waitForFinished());
    startDaemon({"--source", "sdcard=udisks2 device=mmcblk1"});
    EXPECT_TRUE(waitUntil([&] { return card.state() == SdCardState::Mounted; }));
}

TEST_F(LinuxHardwareTest, IsWhatFirmwareAndKernelTell)
{
    service.start();
    startDaemon();
    const HardwareInfo hardware(nullptr);
    EXPECT_NE(hardware.deviceName(), "");
    EXPECT_EQ(hardware.modelName(), "Rig 2");
    EXPECT_EQ(hardware.modelNumber(), "R2-100");
    EXPECT_EQ(hardware.hardwareId(), "rig-board");
    EXPECT_EQ(hardware.serialNumber(), "") << "which the maker left out";
    EXPECT_EQ(hardware.hdmiConnector(), HdmiConnector::None);
    EXPECT_FALSE(hardware.isPhysicalKeyboardDevice());
    ASSERT_EQ(hardware.processorCount(), 3);
    EXPECT_EQ(hardware.processorModel(1), "Rig core");
    EXPECT_EQ(hardware.processorModel(2), "") << "which is off line";
    EXPECT_EQ(hardware.processorSpeed(0), 1200);
    EXPECT_EQ(hardware.processorSpeed(1), 2400);
    EXPECT_EQ(hardware.processorSpeed(2), -1);
    log.take(); // that of the last one nothing is told
}

TEST_F(LinuxHardwareTest, IsToldFromTheDeviceTreeWithoutHostnamed)
{
    service.placeDeviceTree();
    startDaemon();
    const HardwareInfo hardware(nullptr);
    EXPECT_EQ(hardware.deviceName(), QSysInfo::machineHostName());
    EXPECT_EQ(hardware.modelName(), "Maker Phone 5");
    EXPECT_EQ(hardware.hardwareId(), "maker,phone-5");
    EXPECT_EQ(hardware.serialNumber(), "0123456789");
    EXPECT_EQ(hardware.hdmiConnector(), HdmiConnector::Micro);
    EXPECT_EQ(root.mode("/pps/services/private/deviceproperties"), 0640U);
    EXPECT_EQ(sourceOf("hardware"), "known");
}

TEST_F(LogindTest, IsUnknownWhereThereIsNoSessionAndNoSuchSeat)
{
    service.start();
    startDaemon();
    EXPECT_EQ(sourceOf("activity"), "known");
    service.endSession();
    EXPECT_TRUE(waitUntil([&] { return sourceOf("activity") == "absent: there is no session on seat0"; }));
    daemon.terminate();
    EXPECT_TRUE(daemon.waitForFinished());
    startDaemon({"--source", "activity=logind seat=seat-9"});
    EXPECT_TRUE(sourceOf("activity").startsWith("absent: ")) << "the stand-in has words of its own for it";
}

TEST_F(LogindTest, WhatChangesRightAfterTheDaemonStartedIsPublishedAtOnce)
{
    qputenv("OZ_GRACE_TIME", "600");
    service.start();
    service.change(true);
    startDaemon();
    const DeviceInfo device;
    EXPECT_EQ(device.activityState(), UserActivityState::Inactive);
    service.change(false);
    EXPECT_TRUE(waitUntil([&] { return device.activityState() == UserActivityState::Active; }));
}

TEST_F(SensorProxyTest, IsMeasuredOnlyWhileSomebodyReads)
{
    service.start();
    startDaemon();
    const auto published = [] { return attributesOf("/pps/services/sensors/orientation"); };
    EXPECT_EQ(published(), (QVariantMap{{"orientation", "top-up"}})) << "for who read before a restart";
    service.waitForRelease();
    EXPECT_TRUE(waitUntil([&] { return published().isEmpty(); }));
    {
        const DeviceInfo device;
        EXPECT_TRUE(waitUntil([&] { return device.isOrientationValid(); }));
        service.change(true);
        EXPECT_TRUE(waitUntil([&] { return device.orientation() == DeviceOrientation::LeftUp; }));
    }
    service.waitForRelease();
    service.change(false);
    DeviceInfo later;
    SignalLog heard(&later);
    EXPECT_EQ(heard.waitFor(1), "orientationValid(true)") << "and not first what it was";
    EXPECT_EQ(later.orientation(), DeviceOrientation::TopUp);
}

} // namespace
