#include "common/ControlService.hpp"
#include "common/Testing.hpp"

#include <oz/PpsPublisher.hpp>
#include <oz/device/Led.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QSet>

#include <thread>

using namespace oz;
using namespace oz::device;
using namespace oz::testing;

namespace {

const QString Control = "/pps/services/led/control";
const QString Status = "/pps/services/led/status";

class LedTest : public DeviceTest
{
protected:
    LedTest() { show({}); }

    // What the service shows: the elements that are lit.
    void show(const QStringList &elements)
    {
        QVariantMap attributes;
        for (const char *element : {"red", "green", "blue"})
            attributes.insert(element, elements.contains(element) ? "on" : "off");
        ASSERT_TRUE(PpsPublisher(Status).publish(attributes));
        settle();
    }
    void showTimes(int times, const QStringList &elements)
    {
        for (int i = 0; i < times; ++i) {
            show(elements);
            show({});
        }
    }

    // The requests since the last call, once there are so many, as "requestLED red 3, cancelLED".
    QString requests(qsizetype count)
    {
        QList<QVariantMap> heard;
        EXPECT_TRUE(waitUntil([&] {
            heard += service.take();
            return heard.size() >= count;
        }));
        QStringList texts;
        for (const QVariantMap &request : heard) {
            const QVariantMap data = request.value("dat").toMap();
            texts.append((request.value("msg").toString() + ' ' + data.value("color").toString() + ' '
                + data.value("blinkCount").toString())
                             .trimmed());
        }
        return texts.join(", ");
    }

    ControlService service{Control, [](PpsServer &, quint64) {}};
};

TEST_F(LedTest, FlashesAsOftenAsItIsAskedToAndCountsWhatTheStatusShows)
{
    struct Step
    {
        std::function<void(Led &)> act;
        QString requests;
        QString signalled;
    };
    const auto flash = [](int count) { return [count](Led &led) { led.flash(count); }; };
    const auto setColor = [](int color) {
        return [color](Led &led) { led.setColor(LedColor::Type(color)); };
    };
    const auto shown = [this](int times, const QStringList &elements) {
        return [=, this](Led &) { showTimes(times, elements); };
    };
    const auto cancel = [](Led &led) { led.cancel(); };
    const Step steps[] = {
        {flash(0), "", ""},
        {cancel, "", ""},
        {shown(1, {"red"}), "", ""},
        {flash(3), "requestLED red 3", "active(true)"},
        {shown(1, {"red"}), "", "remainingFlashCount(2)"},
        {shown(2, {"red", "blue"}), "", ""},
        {shown(2, {"red"}), "cancelLED", "remainingFlashCount(1) active(false)"},
        {shown(1, {"red"}), "", ""},
        {flash(2), "requestLED red 2", "active(true)"},
        {flash(4), "", ""},
        {shown(1, {"red"}), "", "remainingFlashCount(3)"},
        {setColor(LedColor::Red), "", ""},
        {setColor(LedColor::Blue), "cancelLED, requestLED blue 3", "color(Blue) color(255)"},
        {shown(1, {"red"}), "", ""},
        {[](Led &led) { led.resetColor(); }, "cancelLED, requestLED red 3", "color(Red) color(16711680)"},
        {flash(0), "cancelLED", "active(false)"},
        {flash(-7), "requestLED red -1", "active(true)"},
        {shown(5, {"red"}), "", ""},
        {setColor(LedColor::White), "cancelLED, requestLED white -1", "color(White) color(16777215)"},
        {setColor(LedColor::None), "cancelLED", "active(false)"},
        {flash(5), "", ""},
        {setColor(0xFF0001), "", "color(Red) color(16711680)"},
        {setColor(0xFFFF01), "", "color(Yellow) color(16776960)"},
        {setColor(0xFF0100), "", "color(Magenta) color(16711935)"},
        {setColor(0x1000000), "", "color(White) color(16777215)"},
        {setColor(LedColor::White), "", ""},
        {setColor(0x00FF01), "", "color(65281) color(65281)"},
        {flash(5), "", ""},
        {setColor(LedColor::Cyan), "", "color(Cyan) color(65535)"},
        {[](Led &led) { led.flash(); }, "requestLED cyan -1", "active(true)"},
        // A value without a name ends the request as silently as it begins one.
        {setColor(0x000100), "cancelLED", "color(256) color(256)"},
        {flash(1), "", ""},
        {setColor(LedColor::Green), "", "color(Green) color(65280)"},
        {flash(1), "requestLED green 1", "active(true)"},
        {[this](Led &) { root.place(Status, "@other\ngreen::on\n"); }, "", ""},
        {[this](Led &) { root.place(Status, "malformed\n"); }, "", ""},
        {shown(1, {"green"}), "cancelLED", "active(false)"},
    };
    Led led;
    SignalLog heard(&led);
    for (const Step &step : steps) {
        const auto index = std::to_string(&step - steps);
        step.act(led);
        EXPECT_EQ(heard.settled(), step.signalled) << index;
        EXPECT_EQ(requests(step.requests.isEmpty() ? 0 : step.requests.count(',') + 1), step.requests)
            << index;
        EXPECT_EQ(led.isActive(), led.remainingFlashCount() != 0);
    }
}

TEST_F(LedTest, EveryRequestOfAnObjectBearsItsOwnId)
{
    Led first(LedColor::Magenta);
    EXPECT_EQ(valuesOf(first), "color=Magenta remainingFlashCount=0 active=false");
    QList<QVariantMap> heard;
    const auto next = [&] {
        EXPECT_TRUE(waitUntil([&] { return !(heard = service.take()).isEmpty(); }));
        return heard.value(0);
    };
    first.flash(2);
    EXPECT_EQ(valuesOf(first), "color=Magenta remainingFlashCount=2 active=true");
    const QVariantMap request = next();
    const QString id = request.value("id").toString();
    EXPECT_EQ(request,
        (QVariantMap{{"msg", "requestLED"}, {"id", id},
            {"dat", QVariantMap{{"color", "magenta"}, {"blinkCount", 2}}}}));
    first.cancel();
    EXPECT_EQ(next(), (QVariantMap{{"msg", "cancelLED"}, {"id", id}, {"dat", QVariantMap()}}));
    {
        Led second(LedColor::Type(0x1000000));
        EXPECT_EQ(int(second.color()), 0x1000000) << "the constructor takes the value as it is";
        second.setColor(LedColor::Green);
        second.flash();
        EXPECT_EQ(next().value("id"), QString::number(id.toInt() + 1));
        SignalLog silent(&second);
    }
    EXPECT_EQ(next().value("msg"), "cancelLED") << "which its end has asked for";
}

TEST_F(LedTest, WhatDoesNotOpenOrGoesAwayIsSilent)
{
    {
        Led led;
        led.flash(2);
        EXPECT_EQ(requests(1), "requestLED red 2");
        service.serveWith([](PpsServer &server, quint64) { server.deleteLater(); });
        led.setColor(LedColor::Blue);
        ASSERT_TRUE(waitUntil([&] { return !QFile::exists(root.file(Control)); }));
        SignalLog heard(&led);
        led.flash(1);
        EXPECT_EQ(valuesOf(led), "color=Blue remainingFlashCount=1 active=true");
        led.cancel();
        led.flash(2);
        show({"blue"});
        EXPECT_EQ(heard.settled(), "active(false) active(true)") << "without the service nothing is counted";
    }
    service.take();
    ControlService next(Control, [](PpsServer &, quint64) {});
    Led led;
    root.remove(Status);
    led.flash(1);
    EXPECT_TRUE(led.isActive());
    led.cancel();
    QList<QVariantMap> heard;
    EXPECT_TRUE(waitUntil([&] { return !(heard += next.take()).isEmpty(); }));
    EXPECT_EQ(heard.value(0).value("msg"), "cancelLED") << "the request itself went nowhere";

    show({});
    root.setMode(Control, 0);
    EXPECT_EQ(runWithoutRights([] {
        Led forbidden;
        forbidden.flash(1);
        return forbidden.isActive() ? 7 : 0;
    }),
        7);
    EXPECT_EQ(next.take().size(), 0);
}

TEST_F(LedTest, ASlotMayBeginTheNextRequestOrDestroyTheObject)
{
    Led again;
    int rounds = 0;
    QObject::connect(&again, &Led::activeChanged, [&](bool active) {
        if (!active && ++rounds < 3)
            again.flash(rounds);
    });
    again.flash(1);
    again.cancel();
    again.cancel();
    again.cancel();
    EXPECT_EQ(
        requests(6), "requestLED red 1, cancelLED, requestLED red 1, cancelLED, requestLED red 2, cancelLED");

    Led changed;
    const auto once = QObject::connect(&changed, &Led::activeChanged, [&](bool active) {
        if (!active)
            return;
        changed.cancel();
        changed.blockSignals(true);
        changed.flash(7);
        changed.blockSignals(false);
    });
    changed.flash(5);
    EXPECT_EQ(requests(2), "cancelLED, requestLED red 7") << "of what has ended nothing is sent any more";
    QObject::disconnect(once);
    changed.cancel();
    EXPECT_EQ(requests(1), "cancelLED");

    const std::tuple<const char *, std::function<void(Led *)>> rows[] = {
        {"active(true)", [](Led *led) { led->flash(2); }},
        {"active(false)", [](Led *led) { led->cancel(); }},
        {"active(false)", [](Led *led) { led->setColor(LedColor::None); }},
        {"remainingFlashCount(1)", [this](Led *) { show({"red"}); }},
        {"color(Blue)", [](Led *led) { led->setColor(LedColor::Blue); }},
        {"color(255)", [](Led *led) { led->setColor(LedColor::Blue); }},
    };
    for (const auto &[signal, act] : rows) {
        auto *led = new Led;
        if (QString(signal) != "active(true)")
            led->flash(2);
        oz::meta::SignalTap tap(
            led, [&, wanted = QString(signal)](const QMetaMethod &heard, const QVariantList &values) {
                const bool isTwin = heard.name() == "colorChanged" && values[0].typeId() == QMetaType::Int;
                if (heard.name() == wanted.section('(', 0, 0) + "Changed"
                    && isTwin == wanted.endsWith("255)"))
                    delete std::exchange(led, nullptr);
            });
        act(led);
        EXPECT_EQ(led, nullptr) << signal;
        showTimes(1, {});
    }
}

TEST_F(LedTest, ThousandsOfRequestsLeaveNothingOpen)
{
    const auto descriptors = [] {
        return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size();
    };
    Led led;
    led.flash(1);
    led.cancel();
    EXPECT_EQ(requests(2), "requestLED red 1, cancelLED");
    QCoreApplication::processEvents();
    const auto before = descriptors();
    ASSERT_GT(before, 5);
    for (int i = 0; i < 2'000; ++i) {
        led.flash(1 + i % 3);
        led.setColor(i % 2 ? LedColor::Red : LedColor::Blue);
        led.cancel();
        if (i % 100 == 0) { // each request is a connection, which the service has to take first
            EXPECT_TRUE(waitUntil([&] { return descriptors() <= before + 2; })) << i;
        }
    }
    EXPECT_TRUE(waitUntil([&] { return descriptors() == before; }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(led.findChildren<QObject *>().size(), 1);
}

TEST_F(LedTest, AnyThreadMayUseItAndNoTwoObjectsShareAnId)
{
    Led led;
    std::thread other([&] {
        for (int i = 0; i < 200; ++i) {
            led.flash(3);
            led.setColor(i % 2 ? LedColor::Red : LedColor::Blue);
            led.cancel();
        }
        led.setColor(LedColor::Green);
        led.flash(2);
    });
    for (int i = 0; i < 200; ++i) {
        led.flash(i % 4);
        led.setColor(i % 3 ? LedColor::Red : LedColor::White);
        EXPECT_EQ(led.isActive() && led.remainingFlashCount() > 3, false);
        QCoreApplication::processEvents();
    }
    other.join();
    // What another thread began is heard of here.
    led.setColor(LedColor::Green);
    led.flash(2);
    SignalLog heard(&led);
    showTimes(2, {"green"});
    EXPECT_EQ(heard.settled(), "remainingFlashCount(1) active(false)");

    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int j = 0; j < 50; ++j)
                Led(LedColor::Cyan).flash();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QList<int> ids;
    EXPECT_TRUE(waitUntil([&] {
        for (const QVariantMap &request : service.take()) {
            if (request.value("dat").toMap().value("color") == "cyan")
                ids.append(request.value("id").toInt());
        }
        return ids.size() >= 200;
    }));
    const auto [least, most] = std::minmax_element(ids.cbegin(), ids.cend());
    EXPECT_EQ((QSet<int>(ids.cbegin(), ids.cend()).size()), 200);
    EXPECT_EQ(*most - *least, 199);
}

TEST(LedColor, IsItsElementsAndHasAName)
{
    const std::tuple<bool, bool, bool, int, const char *> rows[] = {
        {false, false, false, 0x000000, nullptr},
        {true, false, false, 0xFF0000, "Red"},
        {false, true, false, 0x00FF00, "Green"},
        {false, false, true, 0x0000FF, "Blue"},
        {true, true, false, 0xFFFF00, "Yellow"},
        {false, true, true, 0x00FFFF, "Cyan"},
        {true, false, true, 0xFF00FF, "Magenta"},
        {true, true, true, 0xFFFFFF, "White"},
    };
    for (const auto &[red, green, blue, value, name] : rows) {
        EXPECT_EQ(LedColor::fromBitset(red, green, blue), value);
        EXPECT_EQ(LedColor::toName(LedColor::Type(value)), QString(name));
    }
    EXPECT_TRUE(LedColor::toName(LedColor::Type(0x00FF01)).isNull());
}

} // namespace
