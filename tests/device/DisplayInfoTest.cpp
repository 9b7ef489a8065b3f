#include "harness/Testing.hpp"

#include "screen/ScreenContext.hpp"
#include "screen/ScreenEvent.hpp"

#include <oz/DisplayTree.hpp>
#include <oz/EventService.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/Screen.hpp>
#include <oz/device/DisplayInfo.hpp>

#include <QCoreApplication>

#include <cerrno>
#include <future>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace oz::device;
using namespace oz::harness;
using oz::DisplayTree::Display;
using oz::DisplayTree::Displays;

namespace {

const Display Panel{"panel", oz::ScreenDisplayKind::Internal, true, false, {1280, 720}, {110, 62}, 0, 5};
const Display Monitor{"hdmi", oz::ScreenDisplayKind::External, true, true, {1920, 1080}, {0, 0}, 0, 2};

class DisplayInfoTest : public DeviceTest
{
protected:
    void publish() { ASSERT_TRUE(publisher.replace(oz::DisplayTree::toAttributes(displays))); }
    // Publishes a change and gives what is signalled once every context has taken it in.
    template <typename Change>
    QString signalledBy(const Change &change)
    {
        if (!observer)
            observer = std::make_unique<ScreenContext>();
        change();
        QSize &marker = displays[99].size;
        ++marker.rwidth();
        publish();
        EXPECT_TRUE(waitUntil([&] { return ScreenDisplay::forId(*observer, 99).size() == marker; }));
        QCoreApplication::processEvents();
        return signalled->take();
    }

    Displays displays{{1, Panel}, {4, Monitor}};
    oz::PpsPublisher publisher{oz::DisplayTree::PpsPath};
    std::unique_ptr<SignalLog> signalled;
    std::unique_ptr<ScreenContext> observer;
};

TEST_F(DisplayInfoTest, DescribesTheDisplayWithItsIdentifier)
{
    displays[7] = {"a miracast receiver", 12345, false, true, {720, 1280}, {620, -1}, 90, 6};
    displays[10] = {"Miracast", 0, true, true, {500, 500}, {0, 0}, 45, -1};
    publish();
    const std::pair<int, const char *> rows[] = {
        {1,
            "displayId=1 displayName=\"panel\" pixelSize=1280x720 physicalSize=110x62 "
            "resolution=11636.4x11612.9 aspectType=Landscape attached=true detachable=false "
            "displayTechnology=Oled wireless=false"},
        {4,
            "displayId=4 displayName=\"hdmi\" pixelSize=1920x1080 physicalSize=0x0 resolution=0x0 "
            "aspectType=Landscape attached=true detachable=true displayTechnology=Lcd wireless=false"},
        {7,
            "displayId=7 displayName=\"a miracast receiver\" pixelSize=1280x720 physicalSize=620x-1 "
            "resolution=2064.52x-720000 aspectType=Landscape attached=false detachable=true "
            "displayTechnology=Unknown wireless=true"},
        {10,
            "displayId=10 displayName=\"Miracast\" pixelSize=500x500 physicalSize=0x0 resolution=0x0 "
            "aspectType=Square attached=true detachable=true displayTechnology=Unknown wireless=false"},
    };
    for (const auto &[id, values] : rows) {
        const DisplayInfo info(id);
        EXPECT_TRUE(info.isValid());
        EXPECT_EQ(valuesOf(info), values);
    }
    EXPECT_EQ(DisplayInfo::primaryDisplayId(), 1);
    EXPECT_EQ(DisplayInfo::secondaryDisplayId(), 4);
    EXPECT_EQ(DisplayInfo().displayId(), 1);
    displays.erase(1);
    publish();
    EXPECT_EQ(DisplayInfo::primaryDisplayId(), -1);
    EXPECT_EQ(DisplayInfo().displayId(), -1);
    EXPECT_EQ(log.take(), QStringList{"DisplayInfo: -1 is not a valid display id"});
}

TEST_F(DisplayInfoTest, WhatIsNotThereLeavesTheObjectInvalid)
{
    const QString defaults = "displayId=3 displayName=\"\" pixelSize=-1x-1 physicalSize=-1x-1 "
                             "resolution=1000x1000 aspectType=Landscape attached=false detachable=false "
                             "displayTechnology=Unknown wireless=false";
    const auto make = [&] {
        const DisplayInfo info(3);
        EXPECT_FALSE(info.isValid());
        EXPECT_EQ(valuesOf(info), defaults);
    };
    make();
    EXPECT_EQ(log.take(), QStringList{"ScreenContext: failed to create context - No such file or directory"});
    publish();
    make();
    EXPECT_EQ(log.take(), QStringList{"DisplayInfo: 3 is not a valid display id"});
    displays.clear();
    publish();
    make();
    EXPECT_EQ(log.take(), QStringList{"DisplayInfo: 3 is not a valid display id"});
    EXPECT_EQ(DisplayInfo::secondaryDisplayId(), -1);
    root.place(oz::DisplayTree::PpsPath, "rubbish\n");
    make();
    EXPECT_EQ(log.take(), QStringList{"ScreenContext: failed to create context - Bad message"});
}

TEST_F(DisplayInfoTest, SignalsAttachingAndTheSizeOfADisplayThatStaysAttached)
{
    publish();
    DisplayInfo info(4);
    signalled = std::make_unique<SignalLog>(&info);
    Display &mine = displays[4];
    const QString landscape = "pixelSize(1920x1080) pixelSize({\"height\":1080,\"width\":1920})";
    const QString portrait = "pixelSize(1080x1920) pixelSize({\"height\":1920,\"width\":1080})";
    EXPECT_EQ(signalledBy([&] { mine.rotation = 90; }), portrait);
    EXPECT_EQ(info.aspectType(), DisplayAspectType::Portrait);
    EXPECT_EQ(signalledBy([&] { mine.rotation = 270; }), "");
    EXPECT_EQ(signalledBy([&] { mine.rotation = 180; }), landscape);
    EXPECT_EQ(signalledBy([&] { displays[1].size = {640, 480}; }), "");
    EXPECT_EQ(signalledBy([&] { mine.name = "other"; }), "");
    EXPECT_EQ(info.displayName(), "hdmi");
    EXPECT_EQ(signalledBy([&] { mine.attached = false; }), "attached(false)");
    EXPECT_EQ(info.displayName(), "other");
    EXPECT_EQ(signalledBy([&] { mine.size = {640, 480}; }), "");
    EXPECT_EQ(info.pixelSize(), QSize(1920, 1080));
    EXPECT_EQ(signalledBy([&] { mine.attached = true; }), "attached(true)");
    EXPECT_EQ(info.pixelSize(), QSize(640, 480)); // with no signal of its own
    // Taken away, it is as it was, and detached.
    EXPECT_EQ(signalledBy([&] { displays.erase(4); }), "attached(false)");
    EXPECT_EQ(info.displayName(), "other");
    EXPECT_EQ(signalledBy([&] { displays[4] = Monitor; }), "attached(true)");
    EXPECT_EQ(info.displayName(), "hdmi");
}

TEST_F(DisplayInfoTest, TheSizeThatIsSignalledIsTheOneThatHoldsAndTheLastIsHeard)
{
    publish();
    DisplayInfo info(4);
    QSize last;
    QObject::connect(&info, qOverload<QSize>(&DisplayInfo::pixelSizeChanged), [&](QSize size) {
        EXPECT_EQ(size, info.pixelSize());
        EXPECT_NE(std::exchange(last, size), size);
    });
    constexpr QSize Final(3000, 1);
    std::thread changes([&] {
        for (int width = 1; width <= Final.width(); ++width) {
            displays[4].size = {width, 1};
            publish();
        }
    });
    EXPECT_TRUE(waitUntil([&] { return last == Final; }));
    changes.join();
}

TEST_F(DisplayInfoTest, ASlotMayDestroyTheObject)
{
    publish();
    EXPECT_TRUE(endsWithSignal(1, new DisplayInfo(4), [&] {
        displays[4].size = {640, 480};
        publish();
    }));
}

TEST_F(DisplayInfoTest, OneThatNeverUsedTheEventServiceTakesItFromNobody)
{
    publish();
    DisplayInfo info(4);
    signalled = std::make_unique<SignalLog>(&info);
    for (int i = 0; i < 3; ++i)
        DisplayInfo invalid(99);
    EXPECT_EQ(log.take().size(), 3);
    EXPECT_EQ(signalledBy([&] { displays[4].attached = false; }), "attached(false)");
    // And of a service that takes no more handlers it says so.
    std::vector<oz::sigevent> rest;
    std::thread([&] {
        for (oz::sigevent event; oz::hub_add_sigevent_handler(
                                     &event, [](void *) { return 0; }, nullptr)
             == 0;)
            rest.push_back(event);
    }).join();
    EXPECT_TRUE(DisplayInfo(4).isValid());
    EXPECT_EQ(log.take(), QStringList{"DisplayInfo: failed to register hub sigevent handler"});
    for (oz::sigevent &event : rest)
        oz::hub_remove_sigevent_handler(&event);
}

TEST_F(DisplayInfoTest, TheDisplayServiceQueuesWhatHappensToEachDisplay)
{
    publish();
    ScreenContext context;
    ScreenEvent event;
    const auto next = [&](int timeout) {
        EXPECT_TRUE(context.readEvent(event, timeout));
        if (event.type() == 0)
            return QString("none");
        return QString("%1 of %2 %3").arg(event.type()).arg(event.display().id()).arg(event.isAttached());
    };
    EXPECT_EQ(next(0), "none");
    const DisplayInfo info(1);
    const PostedCalls posted;
    for (int width = 1; width <= 1000; ++width) {
        displays[1].size = {width, 1};
        displays[4].attached = width % 2;
        publish();
    }
    while (ScreenDisplay::forId(context, 1).size() != QSize(1000, 1))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(waitUntil([&] { return info.pixelSize() == QSize(1000, 1); }));
    EXPECT_LE(posted.delivered(), 2) << "while the event loop did not turn";
    // Sizes that follow each other are one event; of a queue that overflows the latest stay.
    QStringList events;
    for (QString text = next(-1); text != "none"; text = next(0))
        events.append(text);
    EXPECT_LE(events.size(), 256);
    EXPECT_THAT(events.count("11 of 1 1"), ::testing::AllOf(::testing::Ge(1), ::testing::Le(4)));
    EXPECT_EQ(events.filter("of 4").last(), "11 of 4 0");
    EXPECT_EQ(event.display().id(), -1);
    EXPECT_EQ(log.take(), QStringList{"ScreenEvent: failed to read display property - Invalid argument"});
}

TEST_F(DisplayInfoTest, AWatchThatFailsForWantOfDescriptorsIsTriedAgain)
{
    publish();
    // The platform's own thread is kept from its first watch until there is no descriptor left.
    struct
    {
        std::promise<void> goOn;
        std::atomic<int> calls = 0;
    } held;
    oz::sigevent event;
    ASSERT_EQ(oz::hub_initialize(), 0);
    std::thread([&] {
        const auto hold = [](void *data) {
            auto *self = static_cast<decltype(held) *>(data);
            if (self->calls++ == 0)
                self->goOn.get_future().wait();
            return 0;
        };
        EXPECT_EQ(oz::hub_add_sigevent_handler(&event, hold, &held), 0);
    }).join();
    const auto call = [&] {
        EXPECT_EQ(oz::MsgSendPulse_r(event.coid, 0, event.code, event.value.sival_int), 0);
    };
    call();
    DisplayInfo info(4);
    const int next = ::dup(2);
    ::close(next);
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{rlim_t(next), limit.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    call(); // behind the watch
    held.goOn.set_value();
    while (held.calls < 2)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ::setrlimit(RLIMIT_NOFILE, &limit);
    displays[4].size = {640, 480};
    publish();
    EXPECT_TRUE(waitUntil([&] { return info.pixelSize() == QSize(640, 480); }));
    log.take();
    oz::hub_remove_sigevent_handler(&event);
    oz::hub_shutdown();
}

TEST_F(DisplayInfoTest, HandlesThatAreNoneAreErrors)
{
    publish();
    auto context = std::make_unique<ScreenContext>();
    const ScreenDisplay display = context->displays().value(0);
    char name[4];
    EXPECT_EQ(oz::screen_get_display_property_cv(display.handle(), 20, sizeof name, name), 0);
    EXPECT_EQ(std::string(name), "pan");
    EXPECT_FALSE(context->notify(4, display.handle(), nullptr));
    EXPECT_FALSE(context->notify(3, context.get(), nullptr));
    context.reset();
    errno = 0;
    EXPECT_EQ(display.id(), -1);
    EXPECT_EQ(display.name(), "");
    EXPECT_EQ(display.physicalSize(), QSizeF(-1, -1));
    EXPECT_EQ(display.technology(), 0);
    const QString reason = " - Invalid argument";
    QStringList expected(2, "ScreenContext: failed to send notification" + reason);
    for (const char *property : {"id", "name", "physical size", "technology"})
        expected.append(QString("ScreenDisplay: failed to read %1 property").arg(property) + reason);
    EXPECT_EQ(log.take(), expected);
    // None at all is silent.
    EXPECT_EQ(ScreenDisplay().size(), QSize(-1, -1));
    EXPECT_EQ(pixelSize(ScreenDisplay()), QSize(-1, -1));
}

} // namespace
