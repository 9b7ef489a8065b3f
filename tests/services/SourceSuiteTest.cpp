#include "services/Rigs.hpp"
#include "services/Services.hpp"
#include "services/WirelessDisplayRig.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QFile>

#include <optional>
#include <unistd.h>

// The requirements on every source, whichever facility it feeds: the daemon and the service that it asks are
// processes of their own, and an application's class is at the other end.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

class PhoneRig final : public Rig
{
public:
    PhoneRig(const char *there, const char *back) : m_there(there), m_back(back) { }
    void change(bool there) override { sim(there ? m_there : m_back); }

private:
    const char *m_there;
    const char *m_back;
};

// A server that can be resized, within one that cannot.
class XServerRig final : public Rig
{
public:
    XServerRig()
        // A number that nobody else takes while the server is away.
        : m_display(QStringLiteral(":%1").arg(2000 + ::getpid() % 50'000))
    {
        m_host = run(&m_outer, "Xvfb", {"-screen", "0", "1600x1200x24"}, {});
    }
    ~XServerRig() override
    {
        XServerRig::stop();
        m_outer.terminate(); // and takes its lock and its socket along
        m_outer.waitForFinished();
    }

    void start() override
    {
        run(&m_inner, "Xephyr", {"-screen", "800x600", "-resizeable"}, m_display);
        m_inner.await([&] { return xrandr({}) == 0; });
    }
    void stop() override
    {
        m_inner.end();
        // Its leftovers would keep the next one from its number.
        QFile::remove("/tmp/.X" + m_display.mid(1) + "-lock");
        QFile::remove("/tmp/.X11-unix/X" + m_display.mid(1));
    }
    void stall(bool stalls) override { m_inner.stall(stalls); }
    [[nodiscard]] bool isProcess() const override { return true; }
    [[nodiscard]] QStringList arguments() const override
    {
        return {"--simulated", "--source", "display=xrandr display=" + m_display};
    }
    // A server that has just started may refuse it, for it still changes its modes.
    void change(bool there) override
    {
        EXPECT_TRUE(waitUntil([&] { return xrandr({"-s", there ? "1024x768" : "800x600"}) == 0; }));
    }

private:
    // Starts a server as a display, or as one that it chooses itself, and gives what DISPLAY calls it.
    QString run(Process *server, const QString &program, QStringList arguments, const QString &display)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", m_host);
        arguments += QStringList{"-nolisten", "tcp"};
        arguments += display.isEmpty() ? QStringList{"-displayfd", "1"} : QStringList{display};
        server->run(program, arguments, environment);
        return display.isEmpty() ? ':' + server->line() : display;
    }

    [[nodiscard]] int xrandr(const QStringList &arguments) const
    {
        Process process;
        process.run("xrandr", QStringList{"-d", m_display} + arguments);
        process.awaitEnd();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    Process m_outer;
    Process m_inner;
    QString m_host;
    QString m_display;
};

// The class of the hardware has no signals: an application that wants to know reads it again.
class HardwareReader final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool keyboard READ hasKeyboard NOTIFY keyboardChanged)
    Q_PROPERTY(QString deviceName READ deviceName NOTIFY deviceNameChanged)
    Q_PROPERTY(QString modelName READ modelName CONSTANT)

public:
    HardwareReader()
    {
        for (PpsObject *object : {&m_inventory, &m_names}) {
            EXPECT_TRUE(object->open(PpsOpenMode::Subscribe));
            connect(object, &PpsObject::readyRead, this, [this, object] {
                (void)object->read();
                if (std::exchange(m_hasKeyboard, hasKeyboard()) != m_hasKeyboard)
                    Q_EMIT keyboardChanged(m_hasKeyboard);
                if (std::exchange(m_deviceName, deviceName()) != m_deviceName)
                    Q_EMIT deviceNameChanged(m_deviceName);
            });
        }
    }
    [[nodiscard]] bool hasKeyboard() const { return m_hardware.isPhysicalKeyboardDevice(); }
    [[nodiscard]] QString deviceName() const { return m_hardware.deviceName(); }
    [[nodiscard]] QString modelName() const { return m_hardware.modelName(); }

Q_SIGNALS:
    void keyboardChanged(bool hasKeyboard);
    void deviceNameChanged(const QString &deviceName);

private:
    HardwareInfo m_hardware{nullptr};
    PpsObject m_inventory{"/pps/services/hw_info/inventory"};
    PpsObject m_names{"/pps/services/deviceproperties"};
    bool m_hasKeyboard = hasKeyboard();
    QString m_deviceName = deviceName();
};

// The activity of the LED or the motor, as an application sees it in the tree: no class has signals for it.
class ActivityReader final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString activity READ activity NOTIFY activityChanged)

public:
    ActivityReader(const QString &facility, std::function<QString(const QVariantMap &)> textOf)
        : m_object("/pps/services/" + facility + "/activity"), m_textOf(std::move(textOf))
    {
        EXPECT_TRUE(m_object.open(PpsOpenMode::Subscribe));
        connect(&m_object, &PpsObject::readyRead, this, &ActivityReader::read);
        read();
    }
    [[nodiscard]] QString activity() const { return m_activity; }

Q_SIGNALS:
    void activityChanged(const QString &activity);

private:
    void read()
    {
        const QString activity = m_textOf(PpsObject::decode(m_object.read()).value("@activity").toMap());
        if (std::exchange(m_activity, activity) != activity)
            Q_EMIT activityChanged(activity);
    }

    PpsObject m_object;
    std::function<QString(const QVariantMap &)> m_textOf;
    QString m_activity;
};

// A LED, and an application that makes it flash.
class LampRig : public Rig
{
public:
    void change(bool there) override
    {
        if (there)
            m_led.flash();
        else
            m_led.cancel();
        awaitLamp(there);
    }

protected:
    virtual void awaitLamp(bool flashes)
    {
        EXPECT_TRUE(waitUntil([flashes] {
            return (attributesOf("/pps/services/led/status").value("blue") == "on") == flashes;
        }));
    }

private:
    Led m_led{LedColor::Blue};
};

// The same with a LED of the kernel's.
class SysfsLampRig final : public LampRig
{
public:
    [[nodiscard]] QStringList arguments() const override { return {"--simulated", "--source", "led=sysfs"}; }
    [[nodiscard]] QProcessEnvironment environment() const override
    {
        QProcessEnvironment environment = Rig::environment();
        m_devices.enter(&environment);
        return environment;
    }

private:
    void awaitLamp(bool flashes) override
    {
        EXPECT_TRUE(waitUntil([&] {
            return flashes ? content("brightness") == "200"
                           : content("brightness") == "7" && content("trigger") == "heartbeat";
        })) << content("brightness").toStdString();
    }
    [[nodiscard]] QByteArray content(const QString &name) const
    {
        QFile file(m_devices.file("/sys/devices/platform/leds/leds/white:notification/" + name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        return file.readAll().trimmed();
    }

    MockDevices m_devices{"P: /devices/platform/leds/leds/white:notification\nE: SUBSYSTEM=leds\n"
                          "A: brightness=7\\n\nA: max_brightness=200\\n\n"
                          "A: trigger=none [heartbeat] timer\\n\n"};
};

// A motor, and an application that runs it.
class MotorRig : public Rig
{
public:
    void change(bool there) override
    {
        if (there)
            VibrationController().start();
        else
            VibrationController().stop();
    }
};

// The same with an input device of the kernel's.
class EvdevMotorRig final : public MotorRig
{
public:
    EvdevMotorRig() { m_devices.emulateRumble("/dev/input/event1"); }
    [[nodiscard]] QStringList arguments() const override
    {
        return {"--simulated", "--source", "vibration=evdev"};
    }
    [[nodiscard]] QProcessEnvironment environment() const override
    {
        QProcessEnvironment environment = Rig::environment();
        m_devices.enter(&environment);
        return environment;
    }
    void change(bool there) override
    {
        MotorRig::change(there);
        const char *const started[] = {"effect 65535", "play 1"};
        const char *const stopped[] = {"play 0", "remove"};
        for (const char *heard : there ? started : stopped)
            EXPECT_EQ(m_devices.heard(), heard);
    }

private:
    MockDevices m_devices{"P: /devices/platform/motor/input/input1/event1\nE: SUBSYSTEM=input\n"
                          "N: input/event1\nE: DEVNAME=/dev/input/event1\n"
                          "A: device/capabilities/ev=200001\\n\n"
                          "A: device/capabilities/ff=107030000 0\\n\n"};
};

struct Case
{
    const char *name;
    std::function<std::unique_ptr<Rig>()> rig;
    std::function<QObject *()> make;
    const char *there; //!< the signals of the change
    const char *back;
    const char *gone = ""; //!< and what is heard when the service stays away; nothing where another stands in
    enum { OutlivesTheDaemon = 1, CanBeRecorded = 2 };
    int abilities = OutlivesTheDaemon | CanBeRecorded;
};

void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
}

template <typename RigType, auto... Arguments>
std::unique_ptr<Rig> over()
{
    return std::make_unique<RigType>(Arguments...);
}

template <typename Facility>
QObject *make()
{
    return new Facility;
}

QObject *makeDevice()
{
    auto *device = new DeviceInfo;
    EXPECT_TRUE(waitUntil([&] { return device->isOrientationValid(); })) << "the first reading";
    return device;
}

QObject *makeDisplay()
{
    return new DisplayInfo(0);
}

QObject *makeLamp()
{
    return new ActivityReader("led", [](const QVariantMap &activity) {
        QStringList colors;
        for (const QVariant &request : activity.value("requests").toList())
            colors.append(request.toMap().value("color").toString());
        return colors.join(u' ');
    });
}

QObject *makeMotor()
{
    return new ActivityReader("vibration", [](const QVariantMap &activity) {
        return QString(activity.value("running").toBool() ? "runs" : "rests");
    });
}

std::function<std::unique_ptr<Rig>()> told(const char *there, const char *back)
{
    return [=] { return std::make_unique<PhoneRig>(there, back); };
}

const char Resized[] = R"(pixelSize(1024x768) pixelSize({"height":768,"width":1024}))";
const char ResizedBack[] = R"(pixelSize(800x600) pixelSize({"height":600,"width":800}))";

const Case Simulated[] = {
    {"battery", told("battery level 12", "battery level 80"), make<BatteryInfo>,
        "level(12, Discharging) level(12, 3)", "level(80, Discharging) level(80, 3)"},
    {"sdcard", told("sdcard unmount", "sdcard mount"), make<SdCardInfo>, "state(Unmounted) state(2)",
        "state(Mounted) state(1)"},
    {"hardware", told("hardware name Other", "hardware name Simulated"), make<HardwareReader>,
        R"(deviceName("Other"))", R"(deviceName("Simulated"))"},
    {"activity", told("activity standby", "activity active"), makeDevice,
        "activityState(Inactive) activityState(2)", "activityState(Active) activityState(1)"},
    {"orientation", told("orientation left-up", "orientation top-up"), makeDevice,
        "orientation(LeftUp) orientation(3)", "orientation(TopUp) orientation(2)"},
    {"display", told("display resize 0 1024 768", "display resize 0 800 600"), makeDisplay, Resized,
        ResizedBack},
    {"simcard", told("simcard incompatible", "simcard insert"), make<SimCardInfo>,
        R"(state(Incompatible) state(1) mobileCountryCode("") mobileNetworkCode("") subscriberIdentifier(""))",
        R"(state(Ready) state(5) mobileCountryCode("001") mobileNetworkCode("01") subscriberIdentifier("001010000000001"))"},
    {"radio", told("radio power off", "radio power on"), make<CellularRadioInfo>,
        "poweredOn(false) activeTechnologies(None) activeTechnologies(0) networkCount(0)",
        "poweredOn(true) activeTechnologies(Lte) activeTechnologies(16) networkCount(1)"},
    {"cellular_network", told("cellular-network home-lte rssi -101", "cellular-network home-lte rssi -85"),
        make<CellularNetworkInfo>, "signalStrength(-101)", "signalStrength(-85)"},
    {"data_profile", told("data-profile mms enabled off", "data-profile mms enabled on"),
        [] { return static_cast<QObject *>(new CellularDataInterface("mms")); }, "valid(false)",
        "valid(true)"},
    {"wifi_direct", told("wifi-direct enabled off", "wifi-direct enabled on"), make<WiFiDirect>,
        "enabled(false)", "enabled(true)"},
    {"miracast", told("miracast stop 5", "miracast start"), make<MiracastManager>,
        "stopReason(ItPolicy) stopReason(4) status(Stopped)",
        "stopReason(NotStopped) stopReason(1) status(Running)"},
    {"led", over<LampRig>, makeLamp, R"(activity("blue"))", R"(activity(""))"},
    {"vibration", over<MotorRig>, makeMotor, R"(activity("runs"))", R"(activity("rests"))", "", 0},
};

// Read from the kernel, without a service that could stall or go away.
const Case Kernel[] = {
    {"sysfs", over<SysfsLampRig>, makeLamp, R"(activity("blue"))", R"(activity(""))"},
    {"evdev", over<EvdevMotorRig>, makeMotor, R"(activity("runs"))", R"(activity("rests"))", "", 0},
};

const Case Services[] = {
    {"xrandr", over<XServerRig>, makeDisplay, Resized, ResizedBack, "attached(false)"},
    {"wayland", over<SwayRig>, makeDisplay, Resized, ResizedBack, "attached(false)"},
    // Connections follow from what applications do.
    {"networkmanager", over<NetworkManagerRig>,
        [] { return static_cast<QObject *>(new CellularDataInterface("Internet--Home-")); },
        R"(connectionState(Connected) connectionState(2) networkInterfaceName("wwan0"))",
        R"(connectionState(Disconnected) connectionState(0) networkInterfaceName(""))",
        R"(valid(false) accessPointName(""))", Case::OutlivesTheDaemon},
    {"modemmanager_network", [] { return std::make_unique<ModemRig>("cellular-network"); },
        make<CellularNetworkInfo>, "services(Data|DataUmts) services(16640) roaming(true)",
        "services(Data|DataLte) services(2097408) roaming(false)",
        "services(None) services(0) name(\"\") mobileCountryCode(\"\") mobileNetworkCode(\"\") "
        "signalStrength(0) "
        "displayName(\"\")"},
    {"modemmanager_radio", [] { return std::make_unique<ModemRig>("radio"); }, make<CellularRadioInfo>,
        "activeTechnologies(Umts) activeTechnologies(2)", "activeTechnologies(Lte) activeTechnologies(16)",
        "poweredOn(false) activeTechnologies(None) activeTechnologies(0) networkCount(0) "
        "enabledTechnologies(None) enabledTechnologies(0)"},
    // A simulated phone keeps the card that it has.
    {"modemmanager_simcard", over<TwoSlotRig>, make<SimCardInfo>,
        R"(mobileNetworkCode("02") serialNumber("8949010000000000002") subscriberIdentifier("001020000000002"))",
        R"(mobileNetworkCode("01") serialNumber("8949010000000000001") subscriberIdentifier("001010000000001"))",
        R"(state(NotDetected) state(0) mobileCountryCode("") mobileNetworkCode("") serialNumber("") )"
        R"(subscriberIdentifier(""))",
        Case::OutlivesTheDaemon},
    {"wpa_supplicant", over<WpaSupplicantRig>, make<WiFiDirect>, "enabled(false)", "enabled(true)",
        "connectionState(Unknown) connectionState(0)"},
    {"wireless_display", [] { return std::make_unique<WirelessDisplayRig>(); }, make<MiracastManager>,
        "stopReason(NotSupported) stopReason(3) status(Stopped)",
        "stopReason(NotStopped) stopReason(1) status(Running)"},
    {"upower", over<UPowerRig>, make<BatteryInfo>, "level(70, Discharging) level(70, 3)",
        "level(80, Discharging) level(80, 3)",
        "level(-1, Unknown) level(-1, 0) present(false) condition(Unknown) condition(0) "
        "fullChargeCapacity(-1) cycleCount(-1) temperature(nan)"},
    {"udisks2", over<UDisksRig>, make<SdCardInfo>, "state(Unmounted) state(2)", "state(Mounted) state(1)",
        "state(Unmounted) state(2)"},
    // Nobody changes what a phone is made of.
    {"hostnamed", over<HardwareRig>, make<HardwareReader>, "keyboard(true)", "keyboard(false)", "",
        Case::OutlivesTheDaemon},
    {"logind", over<LogindRig>, makeDevice, "activityState(Inactive) activityState(2)",
        "activityState(Active) activityState(1)", "activityState(Unknown) activityState(0)"},
    {"iio_sensor_proxy", over<SensorRig>, makeDevice, "orientation(LeftUp) orientation(3)",
        "orientation(TopUp) orientation(2)", "orientationValid(false)"},
};

class SourceSuite : public RigTest, public ::testing::WithParamInterface<Case>
{
protected:
    explicit SourceSuite(std::optional<int> graceTime = {}) : RigTest(GetParam().rig(), graceTime)
    {
        rig->start();
        startDaemon();
        facility.reset(GetParam().make());
        heard = std::make_unique<SignalLog>(facility.get());
    }

    void changesAreHeard()
    {
        for (const bool there : {true, false}) {
            const QString expected = there ? GetParam().there : GetParam().back;
            rig->change(there);
            EXPECT_EQ(heard->waitFor(expected.count(')')), expected);
        }
    }

    std::unique_ptr<QObject> facility;
    std::unique_ptr<SignalLog> heard;
};

// Only sources whose state outlives the daemon.
class LastingSuite : public SourceSuite
{
};

class RecordingSuite : public SourceSuite
{
};

class ServiceSuite : public SourceSuite
{
};

class AbsenceSuite : public SourceSuite
{
};

// With a grace time that a restart does not exceed on a slow machine.
class RestartSuite : public SourceSuite
{
protected:
    RestartSuite() : SourceSuite(10) { }
};

TEST_P(SourceSuite, EachChangeIsHeardOnceAndThenThereIsSilence)
{
    changesAreHeard();
    EXPECT_EQ(heard->settled(), "");
}

TEST_P(SourceSuite, ADaemonThatIsKilledAndStartedAgainIsNotSeen)
{
    const QString values = valuesOf(*facility);
    daemon.kill();
    daemon.waitForFinished();
    startDaemon();
    EXPECT_EQ(heard->settled(), "");
    EXPECT_EQ(valuesOf(*facility), values);
    changesAreHeard();
}

TEST_P(LastingSuite, AStateThatWasChangedOutlivesTheDaemon)
{
    rig->change(true);
    EXPECT_EQ(heard->waitFor(QString(GetParam().there).count(')')), GetParam().there);
    daemon.kill();
    daemon.waitForFinished();
    startDaemon();
    EXPECT_EQ(heard->settled(), "");
}

TEST_P(RecordingSuite, WhatItDoesIsRecordedAndHeardAgainOfASimulatedPhone)
{
    (void)askDaemon("record");
    changesAreHeard();
    const QByteArray recorded = endRecording();
    root.place("/recorded.json", recorded);
    daemon.terminate();
    EXPECT_TRUE(daemon.waitForFinished());
    rig = std::make_unique<PhoneRig>("", "");
    startDaemon({"--fresh", "--phone", root.file("/recorded.json")});
    facility.reset(GetParam().make());
    heard = std::make_unique<SignalLog>(facility.get());
    playStepByStep(root.file("/recorded.json"), [this] {
        if (const auto *display = qobject_cast<DisplayInfo *>(facility.get()))
            settleDisplay(*display);
        else
            settle();
        // Lines of the power manager are read by a thread of the platform's.
        if (const auto *device = qobject_cast<DeviceInfo *>(facility.get())) {
            const QVariantMap state = askDaemon("value", QVariantMap{{"name", "activity.state"}});
            EXPECT_TRUE(waitUntil([&] {
                return (device->activityState() == UserActivityState::Active)
                    == (state.value("value") == "active");
            }));
        }
    });
    // The first steps lead to where the recording began.
    const QString again = heard->settled();
    EXPECT_TRUE(again.endsWith(GetParam().there + QString(' ') + GetParam().back))
        << again.toStdString() << recorded.toStdString();
}

TEST_P(ServiceSuite, AServiceThatStallsHoldsUpNobodyElse)
{
    rig->stall(true);
    if (qobject_cast<MiracastManager *>(facility.get())) {
        sim("battery level 33");
        EXPECT_EQ(BatteryInfo().level(), 33);
    } else {
        sim("miracast stop 5");
        EXPECT_EQ(MiracastManager().status(), MiracastStatus::Stopped);
    }
    EXPECT_EQ(heard->settled(), "");
    rig->stall(false);
    changesAreHeard();
}

TEST_P(AbsenceSuite, AServiceThatStaysAwayMakesItUnknownAndIsFollowedWhenItComes)
{
    rig->stop();
    const QString values = valuesOf(*facility);
    EXPECT_EQ(heard->waitFor(QString(GetParam().gone).count(')')), GetParam().gone);
    rig->start();
    EXPECT_TRUE(waitUntil([&] { return valuesOf(*facility) == values; }));
    (void)heard->settled();
    changesAreHeard();
    log.take();
}

TEST_P(RestartSuite, AServiceThatRestartsWithinTheGraceTimeIsNotSeen)
{
    rig->stop();
    rig->start();
    changesAreHeard();
}

std::string nameOf(const ::testing::TestParamInfo<Case> &row)
{
    return row.param.name;
}

template <std::size_t Size>
auto those(const Case (&rows)[Size], bool (*belongs)(const Case &row))
{
    std::vector<Case> found;
    std::copy_if(std::begin(rows), std::end(rows), std::back_inserter(found), belongs);
    return ::testing::ValuesIn(found);
}

bool lasts(const Case &row)
{
    return row.abilities & Case::OutlivesTheDaemon;
}

bool isRecorded(const Case &row)
{
    return row.abilities & Case::CanBeRecorded;
}

bool isMissed(const Case &row)
{
    return *row.gone;
}

INSTANTIATE_TEST_SUITE_P(Simulated, SourceSuite, ::testing::ValuesIn(Simulated), nameOf);
INSTANTIATE_TEST_SUITE_P(Kernel, SourceSuite, ::testing::ValuesIn(Kernel), nameOf);
INSTANTIATE_TEST_SUITE_P(Services, SourceSuite, ::testing::ValuesIn(Services), nameOf);
INSTANTIATE_TEST_SUITE_P(Simulated, LastingSuite, those(Simulated, lasts), nameOf);
INSTANTIATE_TEST_SUITE_P(Kernel, LastingSuite, those(Kernel, lasts), nameOf);
INSTANTIATE_TEST_SUITE_P(Services, LastingSuite, those(Services, lasts), nameOf);
INSTANTIATE_TEST_SUITE_P(Services, RecordingSuite, those(Services, isRecorded), nameOf);
INSTANTIATE_TEST_SUITE_P(Services, ServiceSuite, ::testing::ValuesIn(Services), nameOf);
INSTANTIATE_TEST_SUITE_P(Services, AbsenceSuite, those(Services, isMissed), nameOf);
INSTANTIATE_TEST_SUITE_P(Services, RestartSuite, ::testing::ValuesIn(Services), nameOf);

} // namespace

#include "SourceSuiteTest.moc"
