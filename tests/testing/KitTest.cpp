#include "harness/Testing.hpp"

#include <oz/client/DaemonClient.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/testing/Phone.hpp>

#include <QProcess>
#include <QTimer>

#include <cmath>
#include <csignal>
#include <thread>

using namespace oz::device;
using namespace oz::harness;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

namespace oz::testing {

namespace {

// The text of the PhoneError that a call throws; empty without one.
std::string errorOf(const std::function<void()> &call)
{
    try {
        call();
    } catch (const PhoneError &error) {
        return error.what();
    }
    return {};
}

struct Driven
{
    std::function<void(Phone &)> drive;
    const char *result; // a condition that holds afterwards; empty if nothing visible changes at once
};

// Every call of the kit except faults.
const Driven Calls[] = {
    {[](Phone &p) { p.activity().standby(); }, "activity.state == standby"},
    {[](Phone &p) { p.activity().active(); }, "activity.state == active"},
    {[](Phone &p) { p.activity().status("proximity", "near"); }, ""},
    {[](Phone &p) { p.battery().setHeld(true); }, ""},
    {[](Phone &p) { p.battery().plug(); }, "battery.charging == yes and battery.chargers == 1"},
    {[](Phone &p) { p.battery().setLevel(20); }, "battery.level == 20"},
    {[](Phone &p) { p.battery().setTemperature(-3.5); }, "battery.temperature == -3.5"},
    {[](Phone &p) { p.battery().setTemperature({}); }, "battery.temperature == unknown"},
    {[](Phone &p) { p.battery().setCondition("bad"); }, "battery.condition == bad"},
    {[](Phone &p) { p.battery().unplug(); }, "battery.chargers == 0"},
    {[](Phone &p) { p.battery().setWirelessReceiver("pad"); }, "battery.receiver == pad"},
    {[](Phone &p) { p.battery().setWirelessReceiver(); }, "battery.chargers == 0"},
    {[](Phone &p) { p.battery().remove(); }, "not battery.present"},
    {[](Phone &p) { p.battery().insert(); }, "battery.present"},
    {[](Phone &p) { p.cellularNetwork("abroad").serve(); }, "cellular-network.mcc == '999'"},
    {[](Phone &p) { p.cellularNetwork("abroad").setRssi(-70); }, "cellular-network.rssi == -70"},
    {[](Phone &p) { p.cellularNetwork("abroad").setOperator("Far East"); },
        "cellular-network.operator == 'Far East'"},
    {[](Phone &p) { p.cellularNetwork("abroad").setRoaming(false); }, "not cellular-network.roaming"},
    {[](Phone &p) { p.cellularNetwork("abroad").setSuppress(true); }, ""},
    {[](Phone &p) { p.cellularNetwork("abroad").leave(); }, "cellular-network.mcc == unknown"},
    {[](Phone &p) { p.clock().speed(2); }, ""},
    {[](Phone &p) { p.clock().advance(2s); }, ""},
    {[](Phone &p) { p.dataProfile("mms").setEnabled(false); }, "not data-profile.mms.enabled"},
    {[](Phone &p) { p.dataProfile("enterprise").setPermitted(true); }, ""},
    {[](Phone &p) {
         p.cellularNetwork("home-lte").serve();
         p.clock().advance(10s);
         EXPECT_EQ(p.dataProfile("internet").connection(), CellularConnectionState::Connected);
         p.dataProfile("internet").drop();
     },
        "data-profile.internet.connection == connecting"},
    {[](Phone &p) { p.display().attach(1); }, "display.1.attached"},
    {[](Phone &p) { p.display().resize(1, 640, 480); }, "display.1.width == 640"},
    {[](Phone &p) { p.display().rotate(1, 90); }, "display.1.rotation == 90"},
    {[](Phone &p) { p.display().detach(1); }, "not display.1.attached"},
    {[](Phone &p) { p.display().add(7, "wall", 800, 600); }, "display.7.attached"},
    {[](Phone &p) { p.display().remove(7); }, "display.7.attached == unknown"},
    {[](Phone &p) { p.hardware().setDeviceName("My phone"); }, "hardware.name == 'My phone'"},
    {[](Phone &p) { p.miracast().sinkGoes("tv"); }, ""},
    {[](Phone &p) { p.miracast().sinkAppears("tv"); }, ""},
    {[](Phone &p) { p.miracast().failNext("scan", -1010); }, ""},
    {[](Phone &p) { p.miracast().stop(5); }, "miracast.stop-reason == 5 and not miracast.running"},
    {[](Phone &p) { p.miracast().start(); }, "miracast.running"},
    {[](Phone &p) { p.miracast().sight({"projector"}); }, "miracast.sinks == 1"},
    {[](Phone &p) { p.miracast().connecting("projector"); }, "miracast.connection == connecting"},
    {[](Phone &p) { p.miracast().session("paused", "projector"); },
        "miracast.session == paused and miracast.sink == 'Meeting room' and display.2.attached"},
    {[](Phone &p) { p.miracast().session("none"); },
        "miracast.connection == disconnected and display.2.attached == unknown"},
    {[](Phone &p) { p.orientation().topUp(); }, "orientation.orientation == top-up"},
    {[](Phone &p) { p.orientation().bottomUp(); }, "orientation.orientation == bottom-up"},
    {[](Phone &p) { p.orientation().leftUp(); }, "orientation.orientation == left-up"},
    {[](Phone &p) { p.orientation().rightUp(); }, "orientation.orientation == right-up"},
    {[](Phone &p) { p.orientation().faceUp(); }, "orientation.orientation == face-up"},
    {[](Phone &p) { p.orientation().faceDown(); }, "orientation.orientation == face-down"},
    {[](Phone &p) { p.orientation().undefined(); }, "orientation.orientation == undefined"},
    {[](Phone &p) {
         p.radio().setEnabledTechnologies({"lte", "gsm"});
     },
        "radio.enabled contains lte and radio.enabled contains gsm and not radio.enabled contains umts"},
    {[](Phone &p) { p.radio().setData(false); }, "not radio.data"},
    {[](Phone &p) { p.radio().setDataRoaming(true); }, "radio.data-roaming"},
    {[](Phone &p) { p.radio().setPower(false); }, "not radio.power"},
    {[](Phone &p) { p.sdcard().busy(); }, "sdcard.busy"},
    {[](Phone &p) { p.sdcard().idle(); }, "not sdcard.busy"},
    {[](Phone &p) { p.sdcard().unmount(); }, "not sdcard.mounted"},
    {[](Phone &p) { p.sdcard().mount(); }, "sdcard.mounted"},
    {[](Phone &p) { p.sdcard().remove(); }, "not sdcard.mounted"},
    {[](Phone &p) { p.sdcard().insert(); }, "sdcard.mounted"},
    {[](Phone &p) { p.simcard().pin(); }, "simcard.state == pin"},
    {[](Phone &p) { p.simcard().notProvisioned(); }, "simcard.state == not-provisioned"},
    {[](Phone &p) { p.simcard().incompatible(); }, "simcard.state == incompatible"},
    {[](Phone &p) { p.simcard().unreadable(); }, "simcard.state == unreadable"},
    {[](Phone &p) { p.simcard().ready(); }, "simcard.state == ready"},
    {[](Phone &p) { p.simcard().remove(); }, "simcard.state == removed"},
    {[](Phone &p) { p.simcard().insert(); }, "simcard.state == ready"},
    {[](Phone &p) { p.vibration().setPresent(false); }, ""},
    {[](Phone &p) { p.wifiDirect().setEnabled(false); }, ""},
    {[](Phone &p) { p.wifiDirect().setEnabled(true); }, ""},
    {[](Phone &p) { p.wifiDirect().peerGoes("tv"); }, ""},
    {[](Phone &p) { p.wifiDirect().peerAppears("tv"); }, ""},
    {[](Phone &p) {
         p.wifiDirect().sight({"tv", "laptop"});
     },
        "wifi-direct.visible == 2"},
    {[](Phone &p) { p.wifiDirect().setScanning(true); }, "wifi-direct.scanning"},
    {[](Phone &p) { p.wifiDirect().setConnecting(true); }, "wifi-direct.connection == connecting"},
    {[](Phone &p) {
         p.wifiDirect().group("client", {"tv", "laptop"});
     },
        "wifi-direct.role == client and wifi-direct.members == 2"},
    {[](Phone &p) { p.wifiDirect().group("owner", {"laptop"}); },
        "wifi-direct.role == owner and wifi-direct.members == 1"},
    {[](Phone &p) { p.wifiDirect().peerJoins("tv"); }, "wifi-direct.members == 2"},
    {[](Phone &p) { p.wifiDirect().peerLeaves("tv"); }, "wifi-direct.members == 1"},
    {[](Phone &p) { p.wifiDirect().group("none"); }, "wifi-direct.connection == disconnected"},
    {[](Phone &p) { p.wifiDirect().failNext("scan", 5); }, ""},
    {[](Phone &p) { p.wifiDirect().setSupported(false); }, ""},
};

// Every fault of the part's service, and its end and start.
template <typename Part>
void breakPart(Part part)
{
    if constexpr (std::is_base_of_v<AnsweringPart, Part>) {
        part.answerLate(1s);
        part.neverAnswer();
    }
    if constexpr (std::is_base_of_v<FaultyPart, Part>) {
        part.failWith(5);
        part.dieOnRequest();
        part.answerRubbish();
    }
    part.killService();
    part.startService();
}

// "PART VERB" for all verbs that the services know, and for those that this phone was told.
std::pair<QStringList, QStringList> knownAndTold(const Phone &phone)
{
    const QVariantMap parts = client::DaemonClient().ask("describe").toMap().value("simulated").toMap();
    QStringList known;
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        for (const QVariant &verb : part->toMap().value("verbs").toList())
            known.append(part.key() + ' ' + verb.toMap().value("name").toString());
    }
    QStringList told;
    for (const QString &order : phone.orders()) {
        const QStringList words = order.split(' ');
        const bool hasInstances = parts.value(words[0]).toMap().contains("instances");
        told.append(words[0] + ' ' + words[hasInstances ? 2 : 1]);
    }
    told.removeDuplicates();
    told.sort();
    known.sort();
    return {known, told};
}

TEST(Phone, HasACallForEveryVerb)
{
    Phone phone;
    for (const Driven &call : Calls) {
        EXPECT_EQ(errorOf([&] { call.drive(phone); }), "");
        EXPECT_TRUE(!*call.result || phone.holds(call.result))
            << call.result << " after " << phone.orders().last().toStdString();
    }
    breakPart(phone.activity());
    breakPart(phone.battery());
    breakPart(phone.cellularNetwork("abroad"));
    breakPart(phone.dataProfile("mms"));
    breakPart(phone.display());
    breakPart(phone.hardware());
    breakPart(phone.led());
    breakPart(phone.miracast());
    breakPart(phone.orientation());
    breakPart(phone.radio());
    breakPart(phone.sdcard());
    breakPart(phone.simcard());
    breakPart(phone.vibration());
    breakPart(phone.wifiDirect());
    const auto [known, told] = knownAndTold(phone);
    EXPECT_EQ(told, known);
}

TEST(Phone, IsSetUpByTheKeysOfItsFile)
{
    PhoneSettings settings;
    settings.set("battery.level", 50).set("battery.level", 7).set("battery.temperature", {});
    settings.set("simcard.state", "pin")
        .set("led.on-seconds", 0.5)
        .set("radio.enabled-technologies", QStringList{"gsm"});
    settings.set("wifi-direct.peers.zoo.pin", "1234567").set("wifi-direct.peers.zoo.name", "Zoo");
    settings.set("wifi-direct.peers.attic.in-range", false);
    settings.set("display.displays", QVariantList{QVariantMap{{"id", 3}, {"name", "Dash"}}});
    const Phone phone(settings);
    EXPECT_EQ(BatteryInfo().level(), 7);
    EXPECT_EQ(DisplayInfo(3).displayName(), "Dash");
    EXPECT_TRUE(phone.holds("battery.temperature == unknown and simcard.state == pin"));
    // In the order of the calls, one line per key.
    EXPECT_LT(settings.text().indexOf("\"zoo\""), settings.text().indexOf("\"attic\""));
    EXPECT_THAT(errorOf([&] {
        const Phone wrong(PhoneSettings().set("led.on-seconds", 1).set("battery.lvel", 7), Phone::Root::Own);
    }),
        HasSubstr("phone.json:6: battery.lvel: unknown key; known here are "));
}

TEST(Phone, ReportsWhyACallFails)
{
    Phone phone;
    EXPECT_THAT(errorOf([&] { phone.battery().setLevel(500); }),
        HasSubstr("battery level 500: battery level: expected a whole number from 0 to 100, found '500' (the "
                  "phone under /"));
    EXPECT_THAT(errorOf([&] { phone.battery().setCondition("good"); }),
        HasSubstr(
            "battery condition good: battery condition: expected one of ok, bad, unknown, found 'good'"));
    EXPECT_THAT(errorOf([&] { (void)phone.holds("led.colour == red"); }), HasSubstr("led.color"));
    EXPECT_THAT(errorOf([&] { phone.waitFor("led.active or battery.level < 5", 10ms); }),
        HasSubstr("led.active or battery.level < 5: led.active is false, battery.level is 80 after 0.01 s"));
    EXPECT_THAT(errorOf([&] { (void)phone.waitForRequest("led.flash", "color == red", 10ms); }),
        HasSubstr("led.flash with color == red: 0 of 1 came within 0.01 s; nothing was asked"));
    EXPECT_THAT(errorOf([&] { phone.waitUntilPlayed(10ms); }), HasSubstr("no scenario has been played"));
    EXPECT_THAT(errorOf([] { const Phone second; }), HasSubstr("sees another phone already"));
    const auto error = errorOf([] {
        const Phone wrong(
            PhoneSettings::fromText("{\n  \"battery\": { \"level\": 101 } }"), Phone::Root::Own);
    });
    EXPECT_THAT(error, HasSubstr("phone.json:2: battery.level: "));
    PhoneSettings text = PhoneSettings::fromText("{}");
    EXPECT_THAT(errorOf([&] { text.set("battery.level", 1); }), HasSubstr("battery.level cannot be set"));
    qputenv("OZ_DEVICED", "/nowhere/ozdeviced");
    EXPECT_THAT(errorOf([] { const Phone none({}, Phone::Root::Own); }),
        HasSubstr("/nowhere/ozdeviced: No such file"));
    qunsetenv("OZ_DEVICED");
    ::kill(pid_t(phone.processId()), SIGKILL);
    EXPECT_THAT(errorOf([&] { phone.waitFor("led.active"); }), HasSubstr("the phone's services are gone"));
}

TEST(Phone, ReportsRequestsOfApplications)
{
    PhoneSettings settings;
    settings.set("led.on-seconds", 60);
    Phone phone(settings);
    Led led(LedColor::Cyan);
    VibrationController vibration;
    EXPECT_EQ(phone.led().lit(), LedColor::None);
    // These run only if waiting runs the event loop.
    QTimer::singleShot(20ms, [&] { led.flash(2); });
    QTimer::singleShot(40ms, [&] { vibration.start(100, 60'000); });
    const PhoneRequest flash = phone.waitForRequest("led.flash", "color == cyan and count == 2");
    EXPECT_EQ(flash.values, (QVariantMap{{"color", "cyan"}, {"count", 2}}));
    EXPECT_EQ(phone.led().lit(), LedColor::Cyan);
    EXPECT_TRUE(phone.led().isActive());
    phone.waitFor("vibration.running");
    EXPECT_EQ(phone.vibration().intensity(), 100);
    vibration.stop();
    EXPECT_FALSE(phone.vibration().isRunning());
    EXPECT_EQ(phone.vibration().last().asked, 60s);
    EXPECT_EQ(phone.vibration().last().end, "stopped");
    QStringList kinds;
    for (const PhoneRequest &request : phone.requests())
        kinds.append(request.kind);
    EXPECT_EQ(kinds, (QStringList{"led.flash", "vibration.run", "vibration.stop"}));
    EXPECT_EQ(phone.requests("vibration.run").size(), 1);
    phone.forgetRequests();
    EXPECT_TRUE(phone.requests().isEmpty());
    for (int i = 0; i < 501; ++i) // more than fit into one answer
        vibration.start(100, uint(60'000 + i % 100));
    EXPECT_EQ(
        phone.waitForRequests(6, "vibration.run", "duration == 60000").last().values.value("intensity"), 100);
    EXPECT_EQ(phone.requests("vibration.run").size(), 501);
    phone.led().killService();
    EXPECT_FALSE(phone.led().isActive());
}

// What an application did not do can be told only once it has handled everything.
TEST(Phone, WaitsUntilApplicationsHaveHandledWhatItWasTold)
{
    Phone phone;
    BatteryInfo battery;
    QList<int> seen;
    VibrationController vibration;
    QObject::connect(&battery, qOverload<int, BatteryChargingState::Type>(&BatteryInfo::levelChanged),
        &battery, [&](int level) {
            // The request is posted by what was posted.
            QTimer::singleShot(0, &battery, [&, level] {
                seen.append(level);
                QMetaObject::invokeMethod(
                    &battery, [&] { vibration.start(50, 1000); }, Qt::QueuedConnection);
            });
        });
    for (int level = 70; level > 60; --level) {
        phone.battery().setLevel(level);
        phone.waitUntilHandled();
        EXPECT_EQ(seen.last(), level);
    }
    EXPECT_EQ(seen.size(), 10);
    EXPECT_EQ(phone.requests("vibration.run").size(), 10);

    // A program of its own, in which each change is a line.
    QProcess program;
    program.setProcessEnvironment(phone.environment());
    program.start(OZ_PROGRAMS "/ozdevice", {"watch", "battery", "--json"});
    ASSERT_TRUE(program.waitForStarted());
    phone.waitUntil([&] {
        phone.battery().setLevel(phone.value("battery.level").toInt() == 50 ? 51 : 50);
        return program.waitForReadyRead(10);
    });
    phone.waitUntilHandled();
    program.waitForReadyRead(0);
    (void)program.readAll();
    for (int level = 49; level > 39; --level) {
        phone.battery().setLevel(level);
        phone.waitUntilHandled();
    }
    ::kill(pid_t(program.processId()), SIGSTOP);
    phone.battery().setLevel(39);
    EXPECT_THAT(errorOf([&] { phone.waitUntilHandled(50ms); }),
        HasSubstr(
            "still busy after 0.05 s is process " + std::to_string(program.processId()) + " (ozdevice)"));
    ::kill(pid_t(program.processId()), SIGKILL);
    phone.waitUntilHandled(); // those that are gone are not waited for
    program.waitForFinished();
    EXPECT_EQ(program.readAll().count("\"levelChanged\""), 10);

    EXPECT_THAT(errorOf([&] { phone.waitUntil([] { return false; }, 10ms, "rain"); }),
        HasSubstr("rain: it did not come within 0.01 s; asked was vibration.run"));
}

TEST(Phone, PlaysScenarios)
{
    DeviceRoot folder;
    folder.place("/good.json", R"({"variables": {"level": 50},
        "steps": ["battery level ${level}", {"wait": 3600}, {"expect": "battery.level <= 9"}]})");
    folder.place("/bad.json", "{\"steps\": [\n{\"expect\": \"led.active\", \"within\": 0.01}]}");
    folder.place("/long.json", R"({"steps": [{"wait": 3600}]})");
    Phone phone;
    phone.play(folder.file("/good.json"), {.speed = 0, .variables = {{"level", 9}}});
    phone.waitUntilPlayed(10s);
    EXPECT_FALSE(phone.isPlaying());
    phone.play(folder.file("/bad.json"));
    EXPECT_THAT(errorOf([&] { phone.waitUntilPlayed(10s); }), HasSubstr("bad.json:2: expect led.active"));
    phone.play(folder.file("/long.json"));
    EXPECT_TRUE(phone.isPlaying());
    EXPECT_THAT(errorOf([&] { phone.waitUntilPlayed(10ms); }), HasSubstr("it still plays after 0.01 s"));
    phone.stopPlaying();
    EXPECT_FALSE(phone.isPlaying());
    EXPECT_THAT(errorOf([&] { phone.play(folder.file("/none.json")); }), HasSubstr("none.json"));
    for (const double speed : {-1.0, double(NAN)}) {
        EXPECT_THAT(errorOf([&] { phone.play(folder.file("/long.json"), {.speed = speed}); }),
            HasSubstr("the speed is a number from 0.001 to 100000, or max"));
    }
    // The application starts late and still sees the first step.
    folder.place("/late.json", R"({"steps": ["battery level 9"]})");
    phone.battery().setLevel(50);
    phone.play(folder.file("/late.json"), {.speed = 0, .waitFor = PlayOptions::WaitFor::Open});
    EXPECT_TRUE(phone.isPlaying());
    EXPECT_EQ(BatteryInfo().level(), 50);
    phone.waitUntilPlayed(10s);
    EXPECT_EQ(BatteryInfo().level(), 9);
    phone.play(folder.file("/bad.json"), {.waitFor = PlayOptions::WaitFor::Request, .waitLimit = 10ms});
    EXPECT_THAT(
        errorOf([&] { phone.waitUntilPlayed(10s); }), HasSubstr("false; it began without an application"));
}

TEST(Phone, IsIsolatedFromOtherPhones)
{
    const QByteArray before = qgetenv("OZ_DEVICE_ROOT");
    {
        Phone first({}, Phone::Root::Own);
        Phone second({}, Phone::Root::Own);
        EXPECT_EQ(qgetenv("OZ_DEVICE_ROOT"), before);
        EXPECT_NE(first.environment().value("OZ_DEVICE_ROOT"), second.environment().value("OZ_DEVICE_ROOT"));
        first.battery().setLevel(3);
        EXPECT_TRUE(second.holds("battery.level == 80"));
        Phone third;
        EXPECT_EQ(qEnvironmentVariable("OZ_DEVICE_ROOT"), third.root());
        EXPECT_EQ(BatteryInfo().level(), 80);
    }
    EXPECT_EQ(qgetenv("OZ_DEVICE_ROOT"), before);
}

TEST(Phone, NeedsNoEventLoopAndOutlivesItsThread)
{
    std::unique_ptr<Phone> phone;
    std::string error = "not run";
    std::thread([&] {
        error = errorOf([&] {
            phone = std::make_unique<Phone>();
            phone->battery().setLevel(33);
            phone->waitFor("battery.level == 33");
        });
    }).join();
    EXPECT_EQ(error, "");
    EXPECT_EQ(BatteryInfo().level(), 33);
    phone->battery().setLevel(34);
    EXPECT_TRUE(phone->holds("battery.level == 34"));
}

} // namespace

} // namespace oz::testing
