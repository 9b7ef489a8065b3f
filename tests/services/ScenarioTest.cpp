// Scenarios as the daemon plays them on the simulated phone.

#include "services/Services.hpp"

#include "daemon/Daemon.hpp"
#include "meta/MetaText.hpp"
#include "source/Error.hpp"

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTimer>

#include <sys/file.h>

using namespace oz;
using namespace oz::services;
using namespace oz::harness;

namespace {

class ScenarioTest : public DeviceTest
{
protected:
    // The error in a scenario's file; empty where there is none.
    QString problemOf(const QByteArray &text)
    {
        root.place("/s.json", text);
        try {
            (void)daemon->scenarios().play({{"file", root.file("/s.json")}, {"check", true}});
        } catch (const Error &error) {
            return error.text().remove(root.file("/"));
        }
        return {};
    }

    // The log of a scenario with these steps, as "TIME TEXT OUTCOME[ DETAIL]", and then how it ended.
    QStringList play(const QByteArray &steps, QVariantMap order = {})
    {
        root.place("/s.json", "{\"variables\": {\"v\": 7}, \"steps\": [" + steps + "]}");
        order.insert("file", root.file("/s.json"));
        if (!order.contains("speed"))
            order.insert("speed", "max");
        QStringList played;
        QString end;
        QObject context;
        QObject::connect(
            &daemon->scenarios(), &ScenarioService::logged, &context, [&](const ScenarioEntry &entry) {
                played.append(QStringList{QString::number(double(entry.time.count()) / 1000), entry.text,
                    entry.outcome, entry.detail}
                                  .join(' ')
                                  .trimmed());
            });
        QObject::connect(
            &daemon->scenarios(), &ScenarioService::finished, &context, [&](ScenarioPlayer::State state) {
                end = state == ScenarioPlayer::Passed ? "passed" : "failed";
            });
        (void)daemon->scenarios().play(order);
        EXPECT_TRUE(waitUntil([&] { return !end.isEmpty(); })) << steps.toStdString();
        return played << end;
    }

    std::unique_ptr<Daemon> daemon =
        std::make_unique<Daemon>(Configuration::simulated(), JsonNode::emptyMap());
};

TEST_F(ScenarioTest, AFileIsCheckedToItsEndBeforeAnythingHappens)
{
    const std::pair<QByteArray, QString> rows[] = {
        {"{}", "s.json:1: there is no 'steps', which is needed here"},
        {R"({"steps": {}})", "s.json:1: steps: expected a list, found a map"},
        {R"({"steps": [], "spede": 1})",
            "s.json:1: spede: unknown key; known here are description, seed, phone"},
        {R"({"steps": [], "report": "it fails"})", "s.json:1: report: expected a map, found \"it fails\""},
        {"{\"steps\": [\"sdcard mount\",\n{}]}",
            "s.json:2: steps[1]: expected a step with one of sim, say, wait"},
        {R"({"steps": [{"wait": 1, "say": "x"}]})",
            "s.json:1: steps[0].wait: a step is one thing, not both say and wait"},
        {R"({"steps": [{"wait": 1, "within": 2}]})",
            "s.json:1: steps[0].within: unknown key; known here are wait, at"},
        {R"({"steps": [{"wait-until": "led.active"}]})",
            "s.json:1: steps[0].wait-until: expected \"handled\"; 'when' waits for a condition"},
        {R"({"steps": [{"wait": -1}]})", "s.json:1: steps[0].wait: expected a number from 0 to "},
        {R"({"steps": [{"wait": "${x}"}]})",
            "s.json:1: steps[0].wait: there is no variable 'x'; there is none"},
        {R"({"variables": {"x": "soon"}, "steps": [{"wait": "${x}"}]})",
            "s.json:1: steps[0].wait: expected a number"},
        {R"({"steps": ["battery"]})", "s.json:1: steps[0]: expected an order"},
        {R"({"steps": ["battery level 101"]})",
            "s.json:1: steps[0]: battery level: expected a whole number from 0 to 100, found '101'"},
        {R"({"steps": ["batery level 1"]})",
            "s.json:1: steps[0]: the simulated phone has no 'batery'; it has "},
        {R"({"steps": ["cellular-network moon serve"]})",
            "s.json:1: steps[0]: cellular-network has no 'moon'; "},
        {R"({"steps": ["led fail-with 0"]})",
            "s.json:1: steps[0]: led fail-with: expected a whole number from 1 to "},
        {R"({"steps": [{"ramp": "battery level", "from": 0, "to": 200, "in": 1}]})",
            "s.json:1: steps[0]: battery level: expected a whole number from 0 to 100, found '200'"},
        {R"({"steps": [{"ramp": "battery level", "from": 0, "in": 1}]})",
            "s.json:1: steps[0]: there is no 'to'"},
        {R"({"steps": [{"repeat": 3, "counter": "n", "steps": ["battery level ${n}00"]}]})",
            "s.json:1: steps[0].steps[0]: battery level: expected a whole number from 0 to 100, found '300'"},
        {R"({"steps": [{"for-each": {"n": [1, "x"]}, "steps": ["battery level ${n}"]}]})",
            "s.json:1: steps[0].steps[0]: battery level: expected a whole number from 0 to 100, found 'x'"},
        {R"({"steps": [{"together": [[], [{"at": 2, "say": ""}, {"at": 1, "say": ""}]]}]})",
            "s.json:1: steps[0].together[1][1].at: this is before the step above it"},
        {R"({"steps": [{"include": "other.json"}]})",
            "s.json:1: steps[0].include: there is no file other.json"},
        {R"({"steps": [{"include": "s.json"}]})", "s.json:1: steps[0]: steps are nested too deeply"},
        {R"({"steps": [{"expect-request": "led.glow"}]})",
            "s.json:1: steps[0].expect-request: there is no request 'led.glow'; there is led.flash, "
            "led.cancel"},
        {R"({"steps": [{"expect-request": "led.flash", "with": "color == mauve"}]})",
            "s.json:1: steps[0].with: color is one of red, green, "},
        {R"({"steps": [{"when": "battery.level <"}]})",
            "s.json:1: steps[0].when: expected a name or a value, found the end"},
        {R"({"steps": [{"when": "battery.level"}]})",
            "s.json:1: steps[0].when: expected a comparison of battery.level"},
        {R"({"steps": [{"when": "battery.level < low"}]})",
            "s.json:1: steps[0].when: battery.level is a number; "},
        {R"({"steps": [{"when": "batery.level < 1"}]})",
            "s.json:1: steps[0].when: there is no value 'batery.level'; "},
        {R"({"steps": [{"when": "led.color == rde"}]})",
            "s.json:1: steps[0].when: led.color is one of red, green"},
        {R"({"steps": [{"when": "sdcard.busy and (led.active"}]})",
            "s.json:1: steps[0].when: expected ')', found the end"},
        {R"({"steps": [{"when": "5 < battery.level"}]})",
            "s.json:1: steps[0].when: expected a name on the left"},
        {R"({"steps": [{"when": "battery.level < unknown"}]})",
            "s.json:1: steps[0].when: battery.level is or is not 'unknown'"},
        {R"({"steps": [{"expect": "led.active", "within": 1, "throughout": 1}]})",
            "s.json:1: steps[0].within: an expectation"},
        // It depends on what the phone is like by then.
        {R"({"steps": ["sdcard unmount", "sdcard busy"]})", ""},
        {"{\"steps\": [{\"when\": \"" + QByteArray(200, '(') + "\"}]}",
            "s.json:1: steps[0].when: the condition is nested"},
    };
    for (const auto &[text, problem] : rows) {
        const QString found = problemOf(text);
        EXPECT_TRUE(problem.isEmpty() ? found.isEmpty() : found.startsWith(problem))
            << text.toStdString() << '\n'
            << found.toStdString();
    }
    EXPECT_EQ(attributesOf("/pps/system/filesystem/removable/sdcard").value("mounted"), true)
        << "nothing was done";
}

TEST_F(ScenarioTest, ConditionsCompareWhatThePhonePublishes)
{
    const std::pair<QByteArray, bool> rows[] = {
        {"battery.level == 80", true},
        {"battery.level > 80 or battery.level <= 79.5", false},
        {"not battery.level != 80 and sdcard.mounted", true},
        {"not (sdcard.mounted and sdcard.busy)", true},
        {"sdcard.busy == false", true},
        {"battery.temperature >= 25.5 and battery.temperature < 25.51", true},
        {"battery.charging == no", true},
        {"cellular-network.rssi < -84", true},
        {"cellular-network.mcc == 001 and cellular-network.operator == 'North Mobile'", true},
        {"cellular-network.operator contains Mob", true},
        {"radio.technologies contains lte", true},
        {"radio.technologies contains gsm", false},
        {"data-profile.internet.connection == connected", true},
        {"data-profile.none.connection == unknown", true},
        {"led.color == unknown and vibration.last-ran == unknown", true},
        {"led.color == red or led.last-shown > -1", false},
        {"display.0.attached and not display.1.attached and display.1.width == 1920", true},
        {"activity.state == active and orientation.orientation == top-up", true},
        {"simcard.state == ready and radio.power and radio.data", true},
        {"miracast.session == stopped and wifi-direct.connection == disconnected", true},
        {"miracast.sinks == 0 and wifi-direct.visible == 0 and miracast.running", true},
        {"battery.level == display.0.rotation", false},
    };
    for (const auto &[condition, holds] : rows) {
        const QStringList played = play("{\"expect\": \"" + condition + "\", \"within\": 0}");
        EXPECT_EQ(played.last(), holds ? "passed" : "failed")
            << condition.toStdString() << played[0].toStdString();
    }
}

TEST_F(ScenarioTest, StepsHappenInThePhonesTime)
{
    root.place("/other.json", R"({"variables": {"p": 1, "q": 2}, "steps": ["battery level ${p}${q}"]})");
    const std::tuple<QByteArray, QStringList> rows[] = {
        {R"("battery level ${v}", {"wait": 1.5}, ["hardware", "name", "My phone"], {"expect": "hardware.name == 'My phone'"})",
            {"0 battery level 7 done", "0 wait 1.5 s done", "1.5 hardware name My phone done",
                "1.5 expect hardware.name == 'My phone' within 10 s passed"}},
        {R"({"at": 3, "say": "a"}, {"repeat": 2, "counter": "i", "steps": [{"at": 2, "say": "b${i}"}]}, {"say": "c"})",
            {"3 a said", "5 b1 said", "7 b2 said", "7 c said"}},
        {R"({"for-each": {"n": [1, "two"]}, "steps": [{"say": "${n} ${v}"}]}, {"repeat": 0, "steps": ["battery plug"]})",
            {"0 1 7 said", "0 two 7 said"}},
        {R"({"include": "other.json", "with": {"p": "${v}"}}, {"expect": "battery.level == 72"})",
            {"0 battery level 72 done", "0 expect battery.level == 72 within 10 s passed"}},
        {R"({"ramp": "battery level", "from": 20, "to": 10, "in": 2.5}, {"expect": "battery.level == 10"})",
            {"0 ramp battery level from 20 to 10 in 2.5 s done",
                "2.5 expect battery.level == 10 within 10 s passed"}},
        {R"("battery level 20", {"together": [
            [{"ramp": "battery level", "from": 20, "to": 10, "in": 10}],
            [{"when": "battery.level < 15", "within": 6}, {"say": "low"}, {"wait": 60}]]}, {"say": "end"})",
            {"0 battery level 20 done", "0 ramp battery level from 20 to 10 in 10 s done",
                "0 when battery.level < 15 waiting", "6 when battery.level < 15 done", "6 low said",
                "6 wait 60 s done", "66 end said"}},
        // By itself it loses a percent in ten minutes.
        {R"("battery level 50", {"repeat": 100, "while": "battery.level > 48", "steps": [{"wait": 500}]}, {"say": "x"})",
            {"0 battery level 50 done", "0 wait 500 s done", "500 wait 500 s done", "1000 wait 500 s done",
                "1500 x said"}},
    };
    for (const auto &[steps, played] : rows) {
        sim("battery plug");
        sim("battery unplug"); // begins a percent anew
        EXPECT_EQ(play(steps), played + QStringList{"passed"}) << steps.toStdString();
    }
}

TEST_F(ScenarioTest, WhatIsRandomIsTheSameWithTheSameSeed)
{
    const QByteArray steps = R"({"repeat": 5, "steps": [{"wait": 10, "jitter": 9}, {"say": "x"}]})";
    const QStringList first = play(steps, {{"seed", 3}});
    EXPECT_EQ(play(steps, {{"seed", 3}}), first);
    EXPECT_NE(play(steps, {{"seed", 4}}), first);
}

TEST_F(ScenarioTest, GoesOnOnceApplicationsHaveHandledWhatHappened)
{
    const QByteArray handled = R"({"wait-until": "handled", "within": 5}, )";
    EXPECT_THAT(play(handled + R"("battery unplug")").join('\n').toStdString(),
        testing::HasSubstr("failed only the applications of a phone of its own can be waited for"));

    // An application that vibrates after a turn of its own. Without the wait it hears of the last level
    // alone.
    ASSERT_TRUE(QDir().mkpath(root.file("/handled")));
    device::BatteryInfo battery;
    device::VibrationController vibration;
    QList<int> seen;
    QObject::connect(&battery,
        qOverload<int, device::BatteryChargingState::Type>(&device::BatteryInfo::levelChanged), &vibration,
        [&](int level) {
            seen.append(level);
            QTimer::singleShot(0, &vibration, [&] { vibration.start(100, 1000); });
        });
    const QByteArray run = R"(, {"expect-request": "vibration.run", "within": 0})";
    const QStringList played = play("\"battery level 9\", " + handled + "\"battery level 8\", " + handled
            + R"({"expect-request": "vibration.run", "with": "intensity == 2", "within": 0})" + run + run
            + run,
        {{"keep-going", true}});
    const QString asked = "vibration.run duration=1000 intensity=100";
    EXPECT_EQ(played.mid(4),
        (QStringList{
            "0 expect-request vibration.run with intensity == 2 within 0 s failed 0 of 1 came; asked was "
                + asked + ", " + asked,
            "0 expect-request vibration.run within 0 s passed",
            "0 expect-request vibration.run within 0 s passed",
            "0 expect-request vibration.run within 0 s failed 0 of 1 came; nothing else was asked",
            "failed"}));
    EXPECT_EQ(seen, (QList<int>{9, 8}));

    // A thread that does not answer, and no longer holds up the scenario once it has ended.
    const QString own = QString::number(QCoreApplication::applicationPid());
    QFile busy(root.file("/handled/" + own + "-1"));
    ASSERT_TRUE(busy.open(QIODevice::WriteOnly));
    ASSERT_EQ(::flock(busy.handle(), LOCK_EX), 0);
    EXPECT_EQ(play(R"({"wait-until": "handled", "within": 0.1}, "battery plug")"),
        (QStringList{"0 wait until handled within 0.1 s failed still busy after 0.1 s is process " + own
                + " (services_test), thread 1",
            "failed"}));
    busy.close();
    EXPECT_EQ(play(handled + R"("battery plug")").last(), "passed");
}

TEST_F(ScenarioTest, ExpectsWhatApplicationsDo)
{
    // The application under test.
    device::BatteryInfo battery;
    device::Led led;
    QObject::connect(&battery,
        qOverload<int, device::BatteryChargingState::Type>(&device::BatteryInfo::levelChanged),
        [&](int level) {
            if (level < 5 && !led.isActive())
                led.flash(2);
        });
    const QByteArray low = R"("battery level 4", )";
    EXPECT_EQ(
        play(low + R"({"expect-request": "led.flash", "with": "color == red and count == 2", "within": 5},
                           {"expect": "led.last-color == red and led.last-shown == 2", "within": 5})")
            .last(),
        "passed");
    // It has met its expectation once.
    const QString again = play(R"({"expect-request": "led.flash", "within": 0.2, "name": "n"})").first();
    EXPECT_EQ(again.section("; ", 0, 0), "0.2 expect-request led.flash within 0.2 s failed 0 of 1 came");
    sim("battery level 50");
    ASSERT_TRUE(waitUntil([&] { return battery.level() == 50; }));
    const QStringList wrong =
        play(low + R"({"expect": "led.color == green", "within": 0.2}, {"say": "later"})");
    EXPECT_EQ(wrong,
        (QStringList{"0 battery level 4 done",
            "0.2 expect led.color == green within 0.2 s failed led.color is red", "failed"}));
    EXPECT_EQ(play(R"({"expect": "not sdcard.busy", "throughout": 0.1}, {"together": [
                      [{"expect": "not sdcard.busy", "throughout": 5}], [{"wait": 1}, "sdcard busy"]]})"),
        (QStringList{"0.1 expect not sdcard.busy throughout 0.1 s passed", "0.1 wait 1 s done",
            "1.1 sdcard busy done", "1.1 expect not sdcard.busy throughout 5 s failed sdcard.busy is true",
            "failed"}));
}

TEST_F(ScenarioTest, AnApplicationHasTheRealTimeThatAnExpectationSays)
{
    QElapsedTimer real;
    real.start();
    EXPECT_EQ(play(R"({"expect": "led.active", "within": 0.4})"),
        (QStringList{"0.4 expect led.active within 0.4 s failed led.active is false", "failed"}));
    EXPECT_GE(real.elapsed(), 400);
    real.restart();
    EXPECT_EQ(play(R"({"wait": 60})", {{"speed", "600"}}).last(), "passed");
    EXPECT_GE(real.elapsed(), 90);
    EXPECT_EQ(play(R"({"wait": 3600})", {{"speed", "0"}}).last(), "passed") << "as max";
}

TEST_F(ScenarioTest, AStepThatFailsEndsItUnlessItKeepsGoing)
{
    const QByteArray steps =
        R"("sdcard unmount", "sdcard busy", {"expect": "sdcard.busy", "within": 0}, {"say": "x"})";
    const QString busy = "0 sdcard busy failed sdcard busy: a card that is not mounted cannot be busy";
    EXPECT_EQ(play(steps), (QStringList{"0 sdcard unmount done", busy, "failed"}));
    EXPECT_EQ(play(steps, {{"keep-going", true}}),
        (QStringList{"0 sdcard unmount done", busy,
            "0 expect sdcard.busy within 0 s failed sdcard.busy is false", "0 x said", "failed"}));
    EXPECT_THROW((void)daemon->scenarios().play({{"file", "s.json"}}), Error);
    for (const char *speed : {"fast", "-1", "nan", ""})
        EXPECT_THROW(
            (void)daemon->scenarios().play({{"file", root.file("/s.json")}, {"speed", speed}}), Error)
            << speed;
}

TEST_F(ScenarioTest, TellsHowMuchIsDoneByTheTimeThatItPlans)
{
    const struct
    {
        const char *before; // the steps that are done when it waits
        const char *after;
        int percent;
    } cases[] = {
        {R"({"wait": 10})", R"({"wait": 30})", 25},
        {R"({"repeat": 4, "steps": [{"wait": 10}]})", R"({"wait": 60})", 40},
        {R"({"repeat": 4, "while": "battery.level == 7", "steps": [{"wait": 10}]})", R"({"wait": 60})", 40},
        {R"({"for-each": {"s": [10, 20]}, "steps": [{"wait": "${s}"}]})", R"({"wait": 70})", 30},
        {R"({"together": [[{"wait": 10}], [{"wait": 30}]]})", R"({"wait": 60})", 40},
        {R"({"ramp": "battery level", "from": 80, "to": 70, "in": 20})", R"({"wait": 60})", 25},
        {R"("sdcard unmount")", R"("sdcard mount", "sdcard unmount")", 25},
    };
    const QString path = "/pps/system/ozdeviced/scenario";
    for (const auto &[before, after, percent] : cases) {
        root.place("/s.json",
            QByteArray(R"({"steps": [)") + before + R"(, {"when": "sdcard.busy"}, )" + after + "]}");
        (void)daemon->scenarios().play({{"file", root.file("/s.json")}, {"speed", "max"}});
        EXPECT_TRUE(waitUntil([&, percent = percent] {
            return attributesOf(path).value("step") == 2 && attributesOf(path).value("percent") == percent;
        })) << before
            << attributesOf(path).value("percent").toInt();
        sim("sdcard mount");
        sim("sdcard busy");
        EXPECT_TRUE(waitUntil([&] { return attributesOf(path).value("state") == "passed"; })) << before;
        EXPECT_EQ(attributesOf(path).value("percent"), 100) << before;
        sim("sdcard idle");
    }
}

TEST_F(ScenarioTest, APausedOneStandsStillUntilItGoesOn)
{
    const auto told = [&](const char *key) { return askDaemon("scenario").value(key); };
    EXPECT_EQ(daemonProblem("pause-scenario"), "no scenario is playing");
    root.place("/s.json", R"({"steps": ["sdcard unmount", {"wait": 5}, "sdcard mount", {"wait": 1},
        {"expect": "battery.level == 7", "within": 3}, {"expect-request": "led.flash", "within": 3}]})");
    (void)daemon->scenarios().play({{"file", root.file("/s.json")}, {"speed", 2}});
    device::SdCardInfo card;
    EXPECT_TRUE(waitUntil([&] { return card.state() == device::SdCardState::Unmounted; }));
    EXPECT_EQ(daemonProblem("pause-scenario"), "");
    EXPECT_EQ(daemonProblem("pause-scenario"), "the scenario is paused already");
    EXPECT_EQ(told("paused"), true);
    const QString path = "/pps/system/ozdeviced/scenario";
    EXPECT_TRUE(waitUntil([&] { return attributesOf(path).value("paused") == true; }));
    EXPECT_EQ(attributesOf(path).value("count"), told("next"));
    EXPECT_EQ(root.mode(path), 0600u);
    EXPECT_EQ(told("state"), "playing");
    EXPECT_EQ(told("steps"), 6);
    EXPECT_EQ(told("step"), 2);
    sim("clock advance 60"); // by hand
    EXPECT_EQ(daemonProblem("scenario-speed", QVariantMap{{"speed", "max"}}), "");
    EXPECT_EQ(told("speed"), "max");
    settle();
    EXPECT_EQ(card.state(), device::SdCardState::Unmounted);
    EXPECT_EQ(daemonProblem("resume-scenario"), "");
    EXPECT_TRUE(waitUntil([&] { return told("step") == 5; }));
    // An expectation has its whole time besides the pause, and requests during the pause count.
    (void)askDaemon("pause-scenario");
    EXPECT_EQ(daemonProblem("resume-scenario"), "");
    (void)askDaemon("pause-scenario");
    EXPECT_EQ(card.state(), device::SdCardState::Mounted);
    device::Led led(device::LedColor::Red);
    led.flash(1);
    QElapsedTimer pause;
    pause.start();
    EXPECT_TRUE(waitUntil([&] { return pause.elapsed() > 3100; }));
    sim("battery level 7");
    EXPECT_EQ(told("state"), "playing");
    (void)askDaemon("resume-scenario");
    EXPECT_TRUE(waitUntil([&] { return told("state") == "passed"; }));
}

TEST_F(ScenarioTest, WaitsForAnApplicationBeforeItBegins)
{
    root.place("/s.json", R"({"steps": ["battery level 7", {"wait": 100}]})");
    const auto told = [&](const char *key) { return askDaemon("scenario").value(key); };
    const auto reads = [&](const QString &path) {
        QFile file(root.file(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    };
    const auto uses = [](auto &&make) { return [make] { EXPECT_TRUE(make()); }; };
    const auto opens = [](const char *path) { return PpsObject(path).open(PpsOpenMode::PublishSubscribe); };
    const QString battery = "/pps/system/BattMgr/status";
    QLocalSocket power;
    const std::tuple<const char *, const char *, std::function<void()>, bool> rows[] = {
        {"open", "what reads a file", [&] { reads(battery); }, true},
        {"open", "what reads an object", uses([] { return device::BatteryInfo().level() > 7; }), true},
        {"open", "a connection", uses([&] { return opens("/pps/services/led/control"); }), true},
        {"open", "a device's client", [&] { power.connectToServer(root.file("/dev/power/mgr")); }, true},
        {"open", "an object that was not there",
            [&] {
                sim("led kill-service");
                sim("led start-service");
                EXPECT_TRUE(opens("/pps/services/led/control"));
            },
            true},
        {"open", "what tools and the services do",
            [&] {
                for (const char *order : {"battery level 50", "display attach 1", "display detach 1",
                         "battery kill-service", "battery start-service", "battery level 80"})
                    sim(order);
                reads("/pps/system/ozdeviced/status");
                EXPECT_FALSE(QDir(root.file("/pps/system")).entryList().isEmpty());
            },
            false},
        {"request", "what only looks",
            [&] {
                reads(battery);
                EXPECT_TRUE(opens("/pps/services/led/control"));
            },
            false},
        {"request", "a request", [] { device::Led(device::LedColor::Red).flash(1); }, true},
        {"request", "a device's line", [&] { power.write("STATUS user_activity\n"); }, true},
    };
    for (const auto &[what, who, act, begins] : rows) {
        SCOPED_TRACE(who);
        (void)daemon->scenarios().play({{"file", root.file("/s.json")}, {"wait-for", what}});
        EXPECT_EQ(told("begun"), false);
        EXPECT_EQ(daemonProblem("pause-scenario"), "the scenario has not begun; it waits for an application");
        act();
        EXPECT_TRUE(!begins || waitUntil([&] { return told("begun").toBool(); }));
        daemon->scenarios().stop("that is enough");
        EXPECT_EQ(told("begun"), begins);
        EXPECT_EQ(told("late"), false);
        EXPECT_EQ(told("state"), "stopped");
        sim("battery level 80");
    }
    EXPECT_EQ(play("\"battery level 7\"", {{"wait-for", "request"}, {"wait-limit", 0.05}}),
        (QStringList{"0 battery level 7 done", "passed"}));
    EXPECT_EQ(told("late"), true);
    for (const char *key : {"wait-for", "wait-limit"})
        EXPECT_THROW((void)daemon->scenarios().play({{"file", root.file("/s.json")}, {key, "it"}}), Error);
}

TEST_F(ScenarioTest, AScenarioThatIsStoppedBeforeItsFirstStepDoesNothing)
{
    root.place("/s.json", R"({"steps": ["battery level 7"]})");
    QSignalSpy steps(&daemon->scenarios(), &ScenarioService::logged);
    (void)daemon->scenarios().play({{"file", root.file("/s.json")}, {"speed", "100"}});
    daemon->scenarios().stop("that is enough");
    settle();
    EXPECT_EQ(steps.count(), 0);
    EXPECT_EQ(askDaemon("scenario").value("speed"), 1) << "of the phone's clock";
}

TEST_F(ScenarioTest, AServiceDiesAndComesBack)
{
    const QString control = "/pps/services/led/control";
    sim("led kill-service");
    PpsObject gone(control);
    EXPECT_FALSE(gone.open(PpsOpenMode::Publish));
    sim("led start-service");
    EXPECT_TRUE(gone.open(PpsOpenMode::Publish));
    EXPECT_EQ(ask(control, {{"msg", "cancelLED"}, {"id", 1}, {"dat", QVariantMap()}}).value("err"), 2);
}

TEST_F(ScenarioTest, TimersThatStartOneAnotherKeepTheirTimesWhenTheClockIsAdvanced)
{
    PhoneClock clock;
    clock.setSpeed(0);
    PhoneTimer timer(clock);
    QList<qint64> ended;
    QObject::connect(&timer, &PhoneTimer::timeout, [&] {
        ended.append(clock.now().count());
        timer.start(std::chrono::milliseconds(400));
    });
    timer.start(std::chrono::milliseconds(100));
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(ended, (QList<qint64>{100, 500, 900}));
    EXPECT_EQ(clock.now().count(), 1000);
}

// The signals of applications while a phone is told \a orders, one after the other, or plays a scenario. The
// act lets them catch up after each.
QStringList heardFrom(const std::function<void(const std::function<void()> &catchUp)> &act)
{
    device::BatteryInfo battery;
    device::SdCardInfo card;
    device::SimCardInfo simcard;
    device::CellularNetworkInfo network;
    device::CellularRadioInfo radio;
    device::DisplayInfo display(1);
    device::WiFiDirect wifi;
    device::MiracastManager miracast;
    QStringList heard;
    std::vector<std::unique_ptr<meta::SignalTap>> taps;
    for (QObject *object : std::initializer_list<QObject *>{
             &battery, &card, &simcard, &network, &radio, &display, &wifi, &miracast}) {
        taps.push_back(std::make_unique<meta::SignalTap>(
            object, [&heard](const QMetaMethod &signal, const QVariantList &arguments) {
                QStringList texts{QString::fromLatin1(signal.name())};
                for (const QVariant &argument : arguments)
                    texts.append(meta::valueText(argument));
                heard.append(texts.join(' '));
            }));
    }
    settle();
    heard.clear();
    act([&] { settleDisplay(display); });
    settle();
    // Nobody can have these again.
    return heard.filter(QRegularExpression("^(?!sessionId|lastUpdate|.*ime)"));
}

TEST_F(ScenarioTest, ARecordingPlaysTheSameToApplicationsWithoutSayingWhoTheyAre)
{
    const QStringList orders{"wifi-direct scanning on", "wifi-direct sight laptop,printer",
        "wifi-direct scanning off", "wifi-direct connecting on", "wifi-direct group client printer,laptop",
        "wifi-direct peer-goes printer", "wifi-direct sight laptop", "wifi-direct group owner laptop",
        "wifi-direct group none", "miracast sight projector", "miracast connecting projector",
        "miracast session playing projector", "miracast session paused projector", "miracast stop 1",
        "miracast start", "miracast session playing projector", "miracast session none",
        "wifi-direct enabled off", "battery plug", "battery level 41", "battery temperature unknown",
        "battery wireless RX-SECRET", "sdcard busy", "sdcard unmount", "sdcard mount", "simcard pin",
        "simcard remove", "simcard insert", "cellular-network home-lte rssi -101",
        "cellular-network home-umts serve", "cellular-network home-umts leave",
        "cellular-network abroad serve", "radio data-roaming on", "radio power off", "display attach 1",
        "display rotate 1 90", "display resize 1 640 480", "display remove 1", "orientation left-up",
        "activity standby", "hardware name AnnSecret"};
    // At the beginning it is not as another phone is.
    sim("battery level 50");
    (void)askDaemon("record");
    QStringList heard = heardFrom([&](const auto &catchUp) {
        for (const QString &order : orders) {
            sim(order);
            // Each has a time of its own.
            QElapsedTimer since;
            since.start();
            EXPECT_TRUE(waitUntil([&] { return since.elapsed() > 4; }));
            catchUp();
        }
    });
    EXPECT_GT(heard.size(), 40);
    const QByteArray recorded = endRecording();
    // IMSI and ICCID of the phone, and names that people gave.
    for (const char *identifier : {"001010000000001", "8900100000000000001", "RX-SECRET", "Secret", "Laptop",
             "Printer", "Meeting", "02:00:00:00:0", "DIRECT-printer", "direct-password"})
        EXPECT_FALSE(recorded.contains(identifier)) << identifier << recorded.toStdString();
    EXPECT_TRUE(recorded.contains("\"imsi\": \"001000000000001\"")) << recorded.toStdString();
    EXPECT_TRUE(recorded.contains("battery wireless receiver-1")) << recorded.toStdString();

    root.place("/recorded.json", recorded);
    daemon.reset();
    daemon = std::make_unique<Daemon>(
        Configuration::simulated(), readPhoneFile(root.file("/recorded.json")), Daemon::Start::Fresh);
    QString end;
    QObject::connect(&daemon->scenarios(), &ScenarioService::finished, &daemon->scenarios(),
        [&](ScenarioPlayer::State, const QString &problem) { end = "ended " + problem; });
    const QStringList again = heardFrom([&](const auto &catchUp) {
        playStepByStep(root.file("/recorded.json"), catchUp);
        EXPECT_TRUE(waitUntil([&] { return !end.isEmpty(); }));
    });
    EXPECT_EQ(end, "ended ");
    heard.replaceInStrings("RX-SECRET", "receiver-1");
    for (const auto &[name, masked] : std::initializer_list<std::pair<const char *, const char *>>{
             {"\"Laptop\"", "\"peer-1\""}, {"\"Printer\"", "\"peer-2\""}, {"Meeting room", "sink-1"},
             {"02:00:00:00:01:02", "02:00:5e:00:00:01"}, {"02:00:00:00:01:03", "02:00:5e:00:00:02"},
             {"02:00:00:00:02:02", "02:00:5e:00:00:04"}, {"02:00:00:00:00:01", "02:00:5e:00:00:03"},
             {"DIRECT-printer", "DIRECT-1"}, {"DIRECT-oz-Kestrel", "DIRECT-2"},
             {"direct-password", "password-1"}, {"kestrel-direct", "password-2"}})
        heard.replaceInStrings(name, masked);
    heard.replaceInStrings("8900100000000000001", "8900000000000000001");
    heard.replaceInStrings("001010000000001", "001000000000001");
    heard.replaceInStrings("cellIdChanged 8193", "cellIdChanged 2");
    heard.replaceInStrings("cellIdChanged 513", "cellIdChanged 3");
    heard.replaceInStrings("locationAreaCodeChanged 78", "locationAreaCodeChanged 1");
    heard.replaceInStrings("locationAreaCodeChanged 9", "locationAreaCodeChanged 2");
    // The first steps lead to where the recording began.
    EXPECT_EQ(again.mid(std::max<qsizetype>(again.indexOf(heard.value(0)), 0)).join('\n').toStdString(),
        heard.join('\n').toStdString());
}

} // namespace
