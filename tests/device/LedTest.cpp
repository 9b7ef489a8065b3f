#include "harness/ControlService.hpp"
#include "harness/Testing.hpp"

#include <oz/PpsPublisher.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/RequestError.hpp>

#include <QCoreApplication>
#include <QPointer>
#include <QSet>

#include <array>
#include <optional>
#include <thread>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Control = "/pps/services/led/control";
const QString Status = "/pps/services/led/status";

class LedTest : public DeviceTest
{
protected:
    LedTest() { show({}); }

    // The elements that the service has lit.
    void show(const QStringList &elements)
    {
        QVariantMap attributes;
        for (const char *element : {"red", "green", "blue"})
            attributes.insert(element, elements.contains(element) ? "on" : "off");
        ASSERT_TRUE(PpsPublisher(Status).publish(attributes));
        settle();
    }
    // The requests since the last call, once there are so many, as "requestLED red 3, cancelLED".
    QString requests(qsizetype count)
    {
        QList<QVariantMap> heard;
        EXPECT_TRUE(waitUntil([&] {
            heard += service->take();
            return heard.size() >= count;
        }));
        QStringList texts;
        for (const QVariantMap &request : heard) {
            const QVariantMap data = request.value("dat").toMap();
            const QStringList words{request.value("msg").toString(), data.value("color").toString(),
                data.value("blinkCount").toString()};
            texts.append(words.join(' ').trimmed());
        }
        return texts.join(", ");
    }

    std::optional<ControlService> service{std::in_place, Control, [](PpsServer &, quint64) {}};
};

TEST_F(LedTest, FlashesAsOftenAsItIsAskedToAndCountsWhatTheStatusShows)
{
    // Orders one after the other, what they make it request, and what it signals.
    const std::tuple<QString, QString, QString> steps[] = {
        {"flash 0, cancel, show red", "", ""},
        {"flash 3", "requestLED red 3", "active(true)"},
        {"show red", "", "remainingFlashCount(2)"},
        {"show red+blue, place @other\nred::on\n, place malformed\n, show ", "", ""},
        {"show red, show red", "cancelLED", "remainingFlashCount(1) active(false)"},
        {"show red", "", ""},
        {"flash 2", "requestLED red 2", "active(true)"},
        {"flash 4, color FF0000, color FF0001", "", ""},
        {"show red", "", "remainingFlashCount(3)"},
        {"color 0000FF", "cancelLED, requestLED blue 3", "color(Blue) color(255)"},
        {"show red", "", ""},
        {"reset", "cancelLED, requestLED red 3", "color(Red) color(16711680)"},
        {"flash 0", "cancelLED", "active(false)"},
        {"flash -7", "requestLED red -1", "active(true)"},
        {"show red, show red", "", ""},
        {"color FFFFFF", "cancelLED, requestLED white -1", "color(White) color(16777215)"},
        {"color 0", "cancelLED", "active(false)"},
        {"flash 5", "", ""},
        {"color FF0001, color FFFF01", "", "color(Red) color(16711680) color(Yellow) color(16776960)"},
        {"color FF0100, color 1000000, color FFFFFF", "",
            "color(Magenta) color(16711935) color(White) color(16777215)"},
        {"color 00FF01, flash 5", "", "color(65281) color(65281)"},
        {"color 00FFFF, flash", "requestLED cyan -1", "color(Cyan) color(65535) active(true)"},
        // A value without a name ends the request as silently as it begins one.
        {"color 000100, flash 1", "cancelLED", "color(256) color(256)"},
    };
    Led led;
    const auto obey = [&](const QString &order) {
        const QString word = order.section(' ', 1);
        if (order.startsWith("flash"))
            word.isEmpty() ? led.flash() : led.flash(word.toInt());
        else if (order.startsWith("color"))
            led.setColor(LedColor::Type(word.toInt(nullptr, 16)));
        else if (order.startsWith("place"))
            root.place(Status, word.toUtf8());
        else if (order.startsWith("show"))
            show(word.split('+'));
        else
            order == "reset" ? led.resetColor() : led.cancel();
        settle();
        show({});
    };
    SignalLog heard(&led);
    for (const auto &[orders, requested, signalled] : steps) {
        for (const QString &order : orders.split(", "))
            obey(order);
        EXPECT_EQ(heard.settled(), signalled) << orders.toStdString();
        EXPECT_EQ(requests(requested.isEmpty() ? 0 : requested.count(',') + 1), requested)
            << orders.toStdString();
        EXPECT_EQ(led.isActive(), led.remainingFlashCount() != 0);
    }
}

TEST_F(LedTest, EveryRequestOfAnObjectBearsItsOwnId)
{
    Led first(LedColor::Magenta);
    EXPECT_EQ(valuesOf(first), "color=Magenta remainingFlashCount=0 active=false");
    QList<QVariantMap> heard;
    const auto next = [&] {
        EXPECT_TRUE(waitUntil([&] { return !(heard = service->take()).isEmpty(); }));
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
    }
    EXPECT_EQ(next().value("msg"), "cancelLED") << "which its end has asked for";
}

TEST_F(LedTest, WhatDoesNotOpenOrGoesAwayIsSilent)
{
    const RequestError error;
    {
        Led led;
        led.flash(2);
        EXPECT_EQ(error.number(), 0);
        EXPECT_EQ(requests(1), "requestLED red 2");
        service->serveWith([](PpsServer &server, quint64) { server.deleteLater(); });
        led.setColor(LedColor::Blue);
        ASSERT_TRUE(waitUntil([&] { return !QFile::exists(root.file(Control)); }));
        SignalLog heard(&led);
        led.flash(1);
        EXPECT_EQ(valuesOf(led), "color=Blue remainingFlashCount=1 active=true");
        led.cancel();
        led.flash(2);
        EXPECT_EQ(error.number(), ENOENT);
        show({"blue"});
        EXPECT_EQ(heard.settled(), "active(false) active(true)") << "without the service nothing is counted";
    }
    service->take();
    ControlService next(Control, [](PpsServer &, quint64) {});
    Led led;
    root.remove(Status);
    led.flash(1);
    EXPECT_EQ(error.text(), "No such file or directory");
    EXPECT_TRUE(led.isActive());
    led.cancel();
    EXPECT_EQ(error.number(), 0);
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
        const QSignalBlocker silence(&changed);
        if (active)
            changed.cancel();
        changed.flash(7);
    });
    changed.flash(5);
    EXPECT_EQ(requests(2), "cancelLED, requestLED red 7") << "of what has ended nothing is sent any more";
    QObject::disconnect(once);

    for (int last = 1; last <= 5; ++last) {
        const QPointer<Led> led(new Led);
        const std::function<void()> acts[] = {[&] { led->flash(2); }, [&] { show({"red"}); },
            [&] { led->setColor(LedColor::Blue); }, [&] { led->setColor(LedColor::None); }};
        EXPECT_TRUE(endsWithSignal(last, led, [&] {
            for (auto act = std::begin(acts); led && act != std::end(acts); ++act)
                (*act)();
        })) << last;
        show({});
    }
}

TEST_F(LedTest, ARequestOutlivesTheServiceAndSoDoTheNextOnes)
{
    Led led;
    SignalLog heard(&led);
    led.flash(2);
    EXPECT_EQ(requests(1), "requestLED red 2");
    service.reset();
    settle();
    EXPECT_TRUE(led.isActive());
    service.emplace(Control, [](PpsServer &, quint64) {});
    for (const char *elements : {"red", "", "red"})
        show({elements});
    EXPECT_EQ(heard.settled(), "active(true) remainingFlashCount(1) active(false)");
    led.flash();
    service.reset();
    led.cancel();
    settle();
    service.emplace(Control, [](PpsServer &, quint64) {});
    led.flash(1);
    EXPECT_TRUE(requests(1).endsWith("requestLED red 1"));
}

TEST_F(LedTest, WhatIsLitBeforeARequestIsNoFlashOfIt)
{
    Led led;
    int ended = 0;
    QObject::connect(&led, &Led::activeChanged, [&](bool active) {
        if (!active && ++ended < 3)
            led.flash(1);
    });
    led.flash(1);
    EXPECT_EQ(requests(1), "requestLED red 1");
    for (int flash = 1; flash <= 3; ++flash) {
        show({"red"});
        settle();
        EXPECT_EQ(ended, flash);
        EXPECT_EQ(requests(flash < 3 ? 2 : 1), flash < 3 ? "cancelLED, requestLED red 1" : "cancelLED");
        show({});
    }
}

TEST_F(LedTest, ThousandsOfRequestsLeaveNothingOpen)
{
    Led led;
    led.flash(1);
    led.cancel();
    EXPECT_EQ(requests(2), "requestLED red 1, cancelLED");
    QCoreApplication::processEvents();
    const auto before = openDescriptors();
    ASSERT_GT(before, 5);
    for (int i = 0; i < 2'000; ++i) {
        led.flash(1 + i % 3);
        led.setColor(i % 2 ? LedColor::Red : LedColor::Blue);
        led.cancel();
        if (i % 100 == 99) { // two connections each, of which a user may have 500 at once
            (void)requests(400);
            EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= before; })) << i;
        }
    }
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
    });
    for (int i = 0; i < 200; ++i) {
        led.flash(i % 4);
        led.setColor(i % 3 ? LedColor::Red : LedColor::White);
        EXPECT_EQ(led.isActive() && led.remainingFlashCount() > 3, false);
        QCoreApplication::processEvents();
    }
    other.join();
    led.cancel();
    led.setColor(LedColor::Green);
    std::thread([&] { led.flash(2); }).join();
    // This thread hears of a flash that another one began.
    SignalLog heard(&led);
    for (const char *elements : {"green", "", "green"})
        show({elements});
    EXPECT_EQ(heard.settled(), "remainingFlashCount(1) active(false)");

    std::array<std::thread, 4> threads;
    for (std::thread &thread : threads) {
        thread = std::thread([] {
            for (int j = 0; j < 50; ++j)
                Led(LedColor::Cyan).flash();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QList<int> ids;
    EXPECT_TRUE(waitUntil([&] {
        for (const QVariantMap &request : service->take()) {
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
    QStringList colors;
    for (int i = 0; i < 8; ++i) {
        const LedColor::Type color = LedColor::fromBitset(i & 4, i & 2, i & 1);
        colors.append(QString::number(color, 16) + LedColor::toName(color));
    }
    EXPECT_EQ(
        colors.join(' '), "0 ffBlue ff00Green ffffCyan ff0000Red ff00ffMagenta ffff00Yellow ffffffWhite");
    EXPECT_TRUE(
        LedColor::toName(LedColor::None).isNull() && LedColor::toName(LedColor::Type(0xFF01)).isNull());
}

} // namespace
