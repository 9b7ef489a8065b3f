#include "services/Rigs.hpp"
#include "services/Services.hpp"

#include <oz/device/Led.hpp>
#include <oz/device/VibrationController.hpp>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <linux/input.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

// LEDs and motors that umockdev plays, under the real daemon and with the applications' classes above it.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

class KernelDevicesTest : public DeviceTest
{
protected:
    void startDaemon(const MockDevices &devices)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        devices.enter(&environment);
        environment.insert("OZ_GRACE_TIME", "1");
        daemon.setProcessEnvironment(environment);
        daemon.start(
            OZ_DAEMON, {"--config", "/dev/null", "--source", "led=sysfs", "--source", "vibration=evdev"});
        awaitDaemon(&daemon);
    }
    ~KernelDevicesTest() override
    {
        daemon.terminate();
        EXPECT_TRUE(daemon.state() == QProcess::NotRunning || daemon.waitForFinished());
    }

    QProcess daemon;
};

QString contentOf(const QString &file)
{
    QFile input(file);
    EXPECT_TRUE(input.open(QIODevice::ReadOnly)) << file.toStdString();
    return QString::fromUtf8(input.readAll()).trimmed();
}

// The names of the files of a folder that were written to, in their order.
class Writes
{
public:
    explicit Writes(const QString &folder) : m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        EXPECT_GE(::inotify_add_watch(m_inotify, qPrintable(folder), IN_CLOSE_WRITE), 0);
    }
    ~Writes() { ::close(m_inotify); }
    QStringList take()
    {
        alignas(inotify_event) char buffer[16 * 1024];
        QStringList names;
        for (ssize_t size; (size = ::read(m_inotify, buffer, sizeof buffer)) > 0;) {
            for (ssize_t at = 0; at < size;) {
                const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
                names.append(event->name);
                at += ssize_t(sizeof *event + event->len);
            }
        }
        return names;
    }

private:
    int m_inotify;
};

struct Lamp
{
    const char *name;
    std::vector<const char *> leds;
    const char *order; //!< of the colours of one that has several
    LedColor::Type color;
    std::vector<const char *> lit; //!< brightness, or intensities, of each while it flashes
};

void PrintTo(const Lamp &lamp, std::ostream *out)
{
    *out << lamp.name;
}

const Lamp Lamps[] = {
    {"several_colors", {"rgb:status"}, "green red blue", LedColor::Magenta, {"0 200 200"}},
    {"one_of_each", {"phone:blue:indicator", "phone:green:indicator", "phone:red:indicator"}, nullptr,
        LedColor::Yellow, {"0", "200", "200"}},
    {"one_color", {"white:notification"}, nullptr, LedColor::Blue, {"200"}},
};

class LampTest : public KernelDevicesTest, public ::testing::WithParamInterface<Lamp>
{
};

TEST_P(LampTest, FlashesAndIsPutBackAsItWasFoundAlsoAfterAKill)
{
    QByteArray description;
    QStringList folders;
    for (const QByteArray led : GetParam().leds) {
        description += "P: /devices/platform/leds/leds/" + led
            + "\nE: SUBSYSTEM=leds\nA: brightness=7\\n\nA: max_brightness=200\\n\n"
              "A: trigger=none [heartbeat] timer\\n\n";
        if (GetParam().order)
            description +=
                QByteArray("A: multi_index=") + GetParam().order + "\\n\nA: multi_intensity=1 2 3\\n\n";
        description += '\n';
        folders.append("/sys/devices/platform/leds/leds/" + led + '/');
    }
    MockDevices devices("P: /devices/platform/i/leds/input3::capslock\nE: SUBSYSTEM=leds\n"
                        "A: brightness=0\\n\nA: max_brightness=1\\n\n\n"
        + description);
    const auto content = [&](qsizetype led, const char *file) {
        return contentOf(devices.file(folders[led] + file));
    };
    startDaemon(devices);
    for (const bool isKilled : {false, true}) {
        // As the kernel shows it, which makes no such text of what is written.
        for (const QString &folder : folders)
            devices.set(folder.chopped(1), "trigger", "none [heartbeat] timer");
        Writes writes(devices.file(folders[0]));
        Led led(GetParam().color);
        led.flash();
        const char *shown = GetParam().order ? "multi_intensity" : "brightness";
        for (std::size_t i = 0; i < GetParam().lit.size(); ++i) {
            EXPECT_TRUE(waitUntil([&] { return content(qsizetype(i), shown) == GetParam().lit[i]; }))
                << content(qsizetype(i), shown).toStdString();
            EXPECT_EQ(content(qsizetype(i), "trigger"), "none");
        }
        if (isKilled) {
            daemon.kill();
            daemon.waitForFinished();
            led.cancel();
            startDaemon(devices);
        } else {
            led.flash(2); // are left
        }
        EXPECT_TRUE(waitUntil([&] { return !led.isActive(); }));
        // The trigger last: the kernel takes it away with what is written before.
        EXPECT_TRUE(waitUntil([&] { return content(0, "trigger") == "heartbeat"; }));
        EXPECT_EQ(content(0, "brightness"), "7");
        const QStringList order = writes.take();
        EXPECT_EQ(order.value(order.size() - 1), "trigger");
        EXPECT_EQ(order.count("trigger"), 2) << order.join(' ').toStdString();
        EXPECT_EQ(content(0, shown), GetParam().order ? "1 2 3" : "7");
    }
    EXPECT_EQ(contentOf(devices.file("/sys/devices/platform/i/leds/input3::capslock/brightness")), "0");
}

INSTANTIATE_TEST_SUITE_P(
    Of, LampTest, ::testing::ValuesIn(Lamps), [](const auto &row) { return std::string(row.param.name); });

TEST_F(KernelDevicesTest, AMotorRumblesAsLongAndAsStrongAsItIsAskedAndStopsWithTheDaemon)
{
    // A controller that can rumble too is no phone's motor.
    MockDevices devices("P: /devices/platform/pad/input/input0/event0\nE: SUBSYSTEM=input\nN: input/event0\n"
                        "E: DEVNAME=/dev/input/event0\nA: device/capabilities/ev=20000b\\n\n"
                        "A: device/capabilities/ff=107030000 0\\n\n\n"
                        "P: /devices/platform/motor/input/input1/event1\nE: SUBSYSTEM=input\n"
                        "N: input/event1\nE: DEVNAME=/dev/input/event1\nA: device/capabilities/ev=200001\\n\n"
                        "A: device/capabilities/ff=107030000 0\\n\n\n");
    devices.emulateRumble("/dev/input/event1");
    startDaemon(devices);
    VibrationController vibration;
    ASSERT_TRUE(vibration.isSupported());
    vibration.start(50, 300);
    EXPECT_EQ(devices.heard(), "effect 65535");
    EXPECT_EQ(devices.heard(), "play 1");
    EXPECT_EQ(devices.heard(), "play 0");
    EXPECT_EQ(devices.heard(), "remove");
}

// The words of `doctor` about a facility.
QJsonObject diagnosisOf(const QString &facility, int expectedStatus)
{
    Process doctor;
    doctor.run(OZ_COMMAND, {"doctor", "--json"});
    doctor.awaitEnd();
    EXPECT_EQ(doctor.exitCode(), expectedStatus);
    return QJsonDocument::fromJson(doctor.readAllStandardOutput())["facilities"][facility].toObject();
}

TEST_F(KernelDevicesTest, DoctorSaysWhatIsMissingAndWhatIsNotAllowed)
{
    const QString name = "/sys/devices/platform/leds/leds/rgb:status/";
    MockDevices devices("P: /devices/platform/leds/leds/rgb:status\nE: SUBSYSTEM=leds\nA: brightness=0\\n\n"
                        "A: max_brightness=1\\n\n\n");
    // As a user who may not write what is the kernel's.
    const ProgramForEverybody program(OZ_DAEMON);
    giveToNobody(root.file(""));
    for (const QString &folder : {QString(), name})
        EXPECT_EQ(::chmod(qPrintable(devices.file(folder)), 0755), 0);
    EXPECT_EQ(::chmod(qPrintable(devices.file(name + "brightness")), 0444), 0);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    devices.enter(&environment);
    program.enter(&environment);
    environment.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + root.file("/no-bus"));
    environment.remove("DISPLAY");
    environment.insert("PATH", root.file("/no-programs"));
    daemon.setProcessEnvironment(environment);
    const QStringList words = asNobody({program.file(), "--config", "/dev/null", "--source", "led=sysfs"});
    daemon.start(words.first(), words.mid(1));
    awaitDaemon(&daemon);

    const QJsonObject led = diagnosisOf("led", 1); // which was asked for by its name
    EXPECT_EQ(led["state"], "absent");
    EXPECT_TRUE(led["why"].toString().contains("brightness: Permission denied; the group 'ozdevice' may"))
        << led["why"].toString().toStdString();
    const QJsonObject battery = diagnosisOf("battery", 1);
    EXPECT_EQ(battery["source"], "upower");
    EXPECT_TRUE(battery["auto"].toBool());
    EXPECT_TRUE(battery["why"].toString().startsWith("there is no system bus"));
    EXPECT_EQ(diagnosisOf("vibration", 1)["why"], "no input device is a vibration motor");
    EXPECT_EQ(diagnosisOf("display", 1)["state"], "none");
    EXPECT_EQ(diagnosisOf("miracast", 1)["why"],
        "wireless-display: ozcast is not there; install the package ozcast");
}

} // namespace
