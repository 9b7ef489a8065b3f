#include "services/Rigs.hpp"
#include "services/Services.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>

#include <QFile>

#include <csignal>
#include <limits>
#include <unistd.h>

// What every source has to do, whoever feeds the facility: the daemon and the service that it asks are
// processes of their own, and an application's class is at the other end.

using namespace oz;
using namespace oz::device;
using namespace oz::testing;

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
        stop();
        m_outer.kill();
        m_outer.waitForFinished();
    }

    void start() override
    {
        run(&m_inner, "Xephyr", {"-screen", "800x600", "-resizeable"}, m_display);
        ASSERT_TRUE(waitUntil([&] { return xrandr({}) == 0; }));
    }
    void stop() override
    {
        m_inner.kill();
        m_inner.waitForFinished();
        // What it leaves keeps the next one from its number.
        QFile::remove("/tmp/.X" + m_display.mid(1) + "-lock");
        QFile::remove("/tmp/.X11-unix/X" + m_display.mid(1));
    }
    void stall(bool stalls) override { ::kill(pid_t(m_inner.processId()), stalls ? SIGSTOP : SIGCONT); }
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
    QString run(QProcess *server, const QString &program, QStringList arguments, QString display)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", m_host);
        server->setProcessEnvironment(environment);
        arguments << "-nolisten"
                  << "tcp";
        if (display.isEmpty())
            arguments << "-displayfd"
                      << "1";
        else
            arguments << display;
        server->start(program, arguments);
        EXPECT_TRUE(server->waitForStarted()) << program.toStdString() << " is not installed (./oz setup)";
        if (display.isEmpty()) {
            EXPECT_TRUE(waitUntil([&] { return server->canReadLine() || server->waitForReadyRead(1); }));
            display = ':' + server->readLine().trimmed();
        }
        return display;
    }

    [[nodiscard]] int xrandr(const QStringList &arguments) const
    {
        QProcess process;
        process.start("xrandr", QStringList{"-d", m_display} + arguments);
        return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                                                         : -1;
    }

    QProcess m_outer;
    QProcess m_inner;
    QString m_host;
    QString m_display;
};

// The class of the hardware has no signals: an application that wants to know reads it again.
class HardwareReader final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool keyboard READ hasKeyboard NOTIFY keyboardChanged)
    Q_PROPERTY(QString texts READ texts CONSTANT)

public:
    HardwareReader()
    {
        EXPECT_TRUE(m_inventory.open(PpsOpenMode::Subscribe));
        connect(&m_inventory, &PpsObject::readyRead, this, [this] {
            (void)m_inventory.read();
            if (std::exchange(m_hasKeyboard, hasKeyboard()) != m_hasKeyboard)
                Q_EMIT keyboardChanged(m_hasKeyboard);
        });
    }
    [[nodiscard]] bool hasKeyboard() const { return m_hardware.isPhysicalKeyboardDevice(); }
    [[nodiscard]] QString texts() const { return m_hardware.deviceName() + m_hardware.modelName(); }

Q_SIGNALS:
    void keyboardChanged(bool hasKeyboard);

private:
    HardwareInfo m_hardware{nullptr};
    PpsObject m_inventory{"/pps/services/hw_info/inventory"};
    bool m_hasKeyboard = hasKeyboard();
};

struct Case
{
    const char *name;
    std::function<std::unique_ptr<Rig>()> rig;
    std::function<QObject *()> make;
    const char *there; //!< the signals of the change
    const char *back;
    const char *gone = ""; //!< and what is heard when the service stays away
};

void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
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

const Case Cases[] = {
    {"simulated_battery", [] { return std::make_unique<PhoneRig>("battery level 12", "battery level 80"); },
        make<BatteryInfo>, "level(12, Discharging) level(12, 3)", "level(80, Discharging) level(80, 3)"},
    {"simulated_sdcard", [] { return std::make_unique<PhoneRig>("sdcard unmount", "sdcard mount"); },
        make<SdCardInfo>, "state(Unmounted) state(2)", "state(Mounted) state(1)"},
    {"simulated_simcard", [] { return std::make_unique<PhoneRig>("simcard incompatible", "simcard insert"); },
        make<SimCardInfo>,
        R"(state(Incompatible) state(1) mobileCountryCode("") mobileNetworkCode("") subscriberIdentifier(""))",
        R"(state(Ready) state(5) mobileCountryCode("001") mobileNetworkCode("01") subscriberIdentifier("001010000000001"))"},
    {"simulated_miracast", [] { return std::make_unique<PhoneRig>("miracast stop 5", "miracast start"); },
        make<MiracastManager>, "stopReason(ItPolicy) stopReason(4) status(Stopped)",
        "stopReason(NotStopped) stopReason(1) status(Running)"},
    {"xrandr", [] { return std::make_unique<XServerRig>(); },
        [] { return static_cast<QObject *>(new DisplayInfo(0)); },
        R"(pixelSize(1024x768) pixelSize({"height":768,"width":1024}))",
        R"(pixelSize(800x600) pixelSize({"height":600,"width":800}))", "attached(false)"},
    {"networkmanager", [] { return std::make_unique<NetworkManagerRig>(); },
        [] { return static_cast<QObject *>(new CellularDataInterface("Internet--Home-")); },
        R"(connectionState(Connected) connectionState(2) networkInterfaceName("wwan0"))",
        R"(connectionState(Disconnected) connectionState(0) networkInterfaceName(""))",
        R"(valid(false) accessPointName(""))"},
    {"modemmanager_network", [] { return std::make_unique<ModemRig>("cellular-network"); },
        make<CellularNetworkInfo>, "services(Data|DataUmts) services(16640) roaming(true)",
        "services(Data|DataLte) services(2097408) roaming(false)",
        "services(None) services(0) name(\"\") mobileCountryCode(\"\") mobileNetworkCode(\"\") "
        "signalStrength(0) "
        "displayName(\"\")"},
    {"wayland", [] { return std::make_unique<SwayRig>(); },
        [] { return static_cast<QObject *>(new DisplayInfo(0)); },
        R"(pixelSize(1024x768) pixelSize({"height":768,"width":1024}))",
        R"(pixelSize(800x600) pixelSize({"height":600,"width":800}))", "attached(false)"},
    {"upower", [] { return std::make_unique<UPowerRig>(); }, make<BatteryInfo>,
        "level(70, Discharging) level(70, 3)", "level(80, Discharging) level(80, 3)",
        "level(-1, Unknown) level(-1, 0) present(false) condition(Unknown) condition(0) "
        "fullChargeCapacity(-1) cycleCount(-1) temperature(nan)"},
    {"udisks2", [] { return std::make_unique<UDisksRig>(); }, make<SdCardInfo>, "state(Unmounted) state(2)",
        "state(Mounted) state(1)", "state(Unmounted) state(2)"},
    {"hardware", [] { return std::make_unique<HardwareRig>(); }, make<HardwareReader>, "keyboard(true)",
        "keyboard(false)"},
    {"logind", [] { return std::make_unique<LogindRig>(); }, makeDevice,
        "activityState(Inactive) activityState(2)", "activityState(Active) activityState(1)",
        "activityState(Unknown) activityState(0)"},
    {"iio_sensor_proxy", [] { return std::make_unique<SensorRig>(); }, makeDevice,
        "orientation(LeftUp) orientation(3)", "orientation(TopUp) orientation(2)", "orientationValid(false)"},
};

class SourceSuite : public RigTest, public ::testing::WithParamInterface<Case>
{
protected:
    SourceSuite() : RigTest(GetParam().rig())
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

TEST_P(SourceSuite, AStateThatWasChangedOutlivesTheDaemon)
{
    rig->change(true);
    EXPECT_EQ(heard->waitFor(QString(GetParam().there).count(')')), GetParam().there);
    daemon.kill();
    daemon.waitForFinished();
    startDaemon();
    EXPECT_EQ(heard->settled(), "");
}

TEST_P(SourceSuite, WhatItDoesIsRecordedAndHeardAgainOfASimulatedPhone)
{
    // Connections follow from what applications do, and nobody changes what a phone is made of.
    const std::string name = GetParam().name;
    if (!rig->isProcess() || name == "networkmanager" || name == "hardware")
        return;
    const QString control = "/pps/system/ozdeviced/control";
    (void)ask(control, {{"msg", "record"}});
    changesAreHeard();
    const QByteArray recorded = endRecording();
    root.place("/recorded.json", recorded);
    daemon.terminate();
    EXPECT_TRUE(daemon.waitForFinished());
    rig = std::make_unique<PhoneRig>("", "");
    startDaemon({"--fresh", "--phone", root.file("/recorded.json")});
    facility.reset(GetParam().make());
    heard = std::make_unique<SignalLog>(facility.get());
    // Slowly: of what follows at once, applications hear the end.
    const QVariantMap order{{"file", root.file("/recorded.json")}, {"speed", 0.2}};
    EXPECT_EQ(ask(control, {{"msg", "play"}, {"dat", order}}).value("errstr"), QVariant());
    QVariantMap played;
    const QVariantMap end{{"from", std::numeric_limits<qint64>::max()}, {"now", true}};
    EXPECT_TRUE(waitUntil(
        [&] {
            played = ask(control, {{"msg", "scenario"}, {"dat", end}}).value("dat").toMap();
            return played.value("state") != "playing";
        },
        60'000));
    EXPECT_EQ(played.value("state"), "passed") << played.value("problem").toString().toStdString();
    // The first steps lead to where the recording began.
    const QString again = heard->settled();
    EXPECT_TRUE(again.endsWith(GetParam().there + QString(' ') + GetParam().back))
        << again.toStdString() << recorded.toStdString();
}

TEST_P(SourceSuite, AServiceThatStallsHoldsUpNobodyElse)
{
    if (!rig->isProcess())
        return; // the daemon itself
    rig->stall(true);
    for (const char *order : {"miracast stop 5", "wifi-direct enabled off"})
        sim(order);
    EXPECT_EQ(MiracastManager().status(), MiracastStatus::Stopped);
    EXPECT_EQ(heard->settled(), "");
    rig->stall(false);
    changesAreHeard();
}

TEST_P(SourceSuite, AServiceThatStaysAwayMakesItUnknownAndIsFollowedWhenItComes)
{
    if (!rig->isProcess())
        return;
    rig->stop();
    const QString values = valuesOf(*facility);
    EXPECT_EQ(heard->waitFor(QString(GetParam().gone).count(')')), GetParam().gone);
    rig->start();
    EXPECT_TRUE(waitUntil([&] { return valuesOf(*facility) == values; }));
    (void)heard->settled();
    changesAreHeard();
    log.take();
}

TEST_P(SourceSuite, AServiceThatRestartsWithinTheGraceTimeIsNotSeen)
{
    if (!rig->isProcess())
        return;
    rig->stop();
    rig->start();
    changesAreHeard();
}

INSTANTIATE_TEST_SUITE_P(
    Of, SourceSuite, ::testing::ValuesIn(Cases), [](const auto &row) { return std::string(row.param.name); });

} // namespace

#include "SourceSuiteTest.moc"
