#include "services/Services.hpp"

#include "battery/Battery.hpp"
#include "linux/LatestReading.hpp"
#include "publishing/FieldsPublisher.hpp"
#include "publishing/StateStore.hpp"

#include <oz/device/BatteryInfo.hpp>

#include <QFile>

#include <fcntl.h>
#include <future>
#include <unistd.h>

// Applications see the same of every source that comes and goes.

using namespace oz;
using namespace oz::device;
using namespace oz::services;
using namespace oz::harness;

namespace {

class HandFedBattery : public BatterySource
{
public:
    using BatterySource::know;
    using BatterySource::setAbsent;
};

class SourceTest : public DeviceTest
{
protected:
    SourceTest() { qputenv("OZ_GRACE_TIME", "0.3"); }

    [[nodiscard]] std::unique_ptr<Publisher> publisherOf(BatterySource &battery)
    {
        return std::make_unique<FieldsPublisher<BatterySource>>(
            "battery", battery, tree, std::vector{&batteryFields()});
    }
    [[nodiscard]] std::unique_ptr<Publisher> publisher()
    {
        auto made = publisherOf(source);
        tree.endStart();
        return made;
    }

    static Battery charged(int level)
    {
        Battery battery;
        battery.present = true;
        battery.level = level;
        battery.charging = Battery::Charging::No;
        battery.chargers = 0;
        battery.temperature = 20;
        return battery;
    }

    StateStore store;
    Tree tree{store};
    HandFedBattery source;
};

TEST_F(SourceTest, WhatASourceDoesNotTellIsUnknownToApplications)
{
    const auto publishes = publisher();
    source.know(charged(50));
    EXPECT_EQ(valuesOf(BatteryInfo()),
        "level=50 chargingState=Discharging present=true condition=Unknown fullChargeCapacity=-1 "
        "cycleCount=-1 temperature=20 rxid=\"\"");
}

TEST_F(SourceTest, OneThatComesLaterIsFollowedByApplicationsThatStartedFirst)
{
    const auto publishes = publisher();
    EXPECT_TRUE(QFile::exists(root.file("/pps/system/BattMgr/status")));
    EXPECT_FALSE(publishes->hasSettled());
    BatteryInfo battery;
    EXPECT_EQ(battery.level(), -1);
    log.take(); // that the object has no attributes
    SignalLog heard(&battery);
    source.know(charged(7));
    EXPECT_TRUE(publishes->hasSettled());
    EXPECT_EQ(heard.waitFor(4), "level(7, Discharging) level(7, 3) present(true) temperature(20)");
}

TEST_F(SourceTest, ARestartWithinTheGraceTimeIsNotSeenAndALongerOneEmptiesTheObjects)
{
    const auto publishes = publisher();
    source.know(charged(30));
    BatteryInfo battery;
    SignalLog heard(&battery);
    source.setAbsent("its service restarts");
    EXPECT_EQ(heard.settled(), "");
    source.know(charged(30));
    source.know(charged(31));
    EXPECT_EQ(heard.waitFor(2), "level(31, Discharging) level(31, 3)");
    source.setAbsent("its service is stopped");
    EXPECT_EQ(heard.waitFor(2).left(36), "level(-1, Unknown) level(-1, 0) pres");
    EXPECT_EQ(log.take().first(), "battery is absent: its service is stopped");
    source.know(charged(32));
    EXPECT_EQ(heard.waitFor(2).left(40), "level(32, Discharging) level(32, 3) pres");
}

TEST_F(SourceTest, WhatAFormerDaemonPublishedStaysUntilItsSourceIsKnown)
{
    {
        const auto before = publisher();
        source.know(charged(60));
    }
    BatteryInfo battery;
    SignalLog heard(&battery);
    HandFedBattery restarted;
    tree.setContinued({"battery"});
    const auto publishes = publisherOf(restarted);
    EXPECT_EQ(heard.settled(), "");
    restarted.know(charged(61));
    EXPECT_EQ(heard.waitFor(2), "level(61, Discharging) level(61, 3)");
}

TEST_F(SourceTest, WhatAnotherSourcePublishedBeforeHoldsNotForAMoment)
{
    {
        const auto before = publisher();
        source.know(charged(60));
    }
    HandFedBattery another;
    const auto publishes = publisherOf(another);
    EXPECT_EQ(attributesOf("/pps/system/BattMgr/status"), QVariantMap());
}

TEST_F(SourceTest, WhatCannotBeWrittenNowIsWrittenOnceItCanTheNewestAlone)
{
    const auto publishes = publisher();
    source.know(charged(10));
    BatteryInfo battery;
    SignalLog heard(&battery);
    std::vector<int> taken;
    for (int descriptor = 0; (descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
        taken.push_back(descriptor);
    source.know(charged(11));
    source.know(charged(12));
    const bool wasTrue = tree.isTrue();
    for (const int descriptor : taken)
        ::close(descriptor);
    EXPECT_FALSE(wasTrue);
    EXPECT_EQ(log.take(),
        QStringList{
            "cannot publish /pps/system/BattMgr/status: Too many open files; it is tried again until it "
            "is done"});
    EXPECT_TRUE(waitUntil([&] { return tree.isTrue(); }));
    EXPECT_EQ(heard.waitFor(2), "level(12, Discharging) level(12, 3)");
}

TEST_F(SourceTest, AReadingThatIsAskedForDuringAnotherBeginsAfterItAndTheLastOneCounts)
{
    QObject context;
    QStringList results;
    LatestReading<QString> reading(&context, [&](const QString &result) { results.append(result); });
    std::promise<void> released;
    std::shared_future<void> release = released.get_future().share();
    reading.begin([release] {
        release.wait();
        return QString("first");
    });
    for (const char *name : {"second", "third"})
        reading.begin([name] { return QString(name); });
    EXPECT_TRUE(reading.isUnderWay());
    released.set_value();
    EXPECT_TRUE(waitUntil([&] { return results.size() == 2; }));
    EXPECT_EQ(results, (QStringList{"first", "third"}));
    EXPECT_FALSE(reading.isUnderWay());
}

} // namespace
