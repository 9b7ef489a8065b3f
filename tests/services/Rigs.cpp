#include "services/Rigs.hpp"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <oz/PpsObject.hpp>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace oz::harness {

PrivateBus::PrivateBus()
{
    m_daemon.run("dbus-daemon", {"--session", "--print-address", "--nofork"});
    m_address = m_daemon.line();
}

void PrivateBus::enter(QProcessEnvironment *environment) const
{
    environment->insert("DBUS_SYSTEM_BUS_ADDRESS", m_address);
    environment->insert("DBUS_SESSION_BUS_ADDRESS", m_address);
}

namespace {

void preload(QProcessEnvironment *environment)
{
    environment->insert("LD_PRELOAD", "libumockdev-preload.so.0");
    // A program with the address sanitizer would otherwise insist on its own library being the first.
    environment->insert("ASAN_OPTIONS", "verify_asan_link_order=0");
}

} // namespace

MockDevices::MockDevices(const QByteArray &description)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    preload(&environment);
    m_process.run(OZ_MOCK_DEVICES, {}, environment);
    m_folder = m_process.line();
    add(description);
}

void MockDevices::add(const QByteArray &description)
{
    QFile file(m_files.filePath("devices"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(description) == description.size());
    file.close();
    order("add " + file.fileName());
}

void MockDevices::set(const QString &device, const QString &attribute, const QString &value)
{
    order(QStringList{"set", device, attribute, value}.join(' '));
}

void MockDevices::hang(const QString &path, const std::function<void()> &cause)
{
    const QByteArray pipe = QFile::encodeName(file(path));
    EXPECT_EQ(::unlink(pipe.constData()), 0);
    EXPECT_EQ(::mkfifo(pipe.constData(), 0644), 0);
    // It can be opened, as umockdev opens nothing else meanwhile, but never read to its end.
    QFile &end = m_hanging.emplace_back(QFile::decodeName(pipe));
    EXPECT_TRUE(end.open(QIODevice::ReadWrite | QIODevice::Unbuffered) && end.putChar('0'));
    cause();
    EXPECT_TRUE(waitUntil([&] {
        int left = 0;
        return ::ioctl(end.handle(), FIONREAD, &left) == 0 && left == 0;
    }));
}

void MockDevices::write(const QString &path, const QByteArray &content)
{
    EXPECT_TRUE(QDir().mkpath(QFileInfo(file(path)).path()));
    QSaveFile output(file(path));
    EXPECT_TRUE(output.open(QIODevice::WriteOnly) && output.write(content) == content.size());
    EXPECT_TRUE(output.commit());
}

void MockDevices::remove(const QString &device)
{
    event(device, "remove");
    order("remove " + device);
}

void MockDevices::event(const QString &device, const QString &action)
{
    order(QStringList{"event", device, action}.join(' '));
}

void MockDevices::order(const QString &line)
{
    m_process.write(line.toUtf8() + '\n');
    QString answer = m_process.line();
    for (; answer.startsWith("heard "); answer = m_process.line())
        m_heard.append(answer);
    EXPECT_EQ(answer, "ok") << line.toStdString();
}

QString MockDevices::heard()
{
    return (m_heard.isEmpty() ? m_process.line() : m_heard.takeFirst()).mid(6);
}

void MockDevices::enter(QProcessEnvironment *environment) const
{
    preload(environment);
    environment->insert("UMOCKDEV_DIR", m_folder);
}

BusRig::BusRig(
    const QString &source, const QString &name, const QStringList &program, const QByteArray &devices)
    : m_source(source), m_name(name), m_program(program), m_devices(devices)
{
}

QProcessEnvironment BusRig::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    m_bus.enter(&environment);
    m_devices.enter(&environment);
    return environment;
}

void BusRig::allowAll()
{
    const QString authority = "org.freedesktop.PolicyKit1";
    runOnBus(
        &m_authority, {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "polkitd"}, authority);
    call({"/org/freedesktop/PolicyKit1/Authority", "org.freedesktop.DBus.Mock.AllowUnknown", "true"},
        authority);
}

void BusRig::start()
{
    runOnBus(&m_service, m_program, m_name);
}

void BusRig::runOnBus(Process *process, const QStringList &program, const QString &name)
{
    process->run(program.first(), program.mid(1), environment());
    Process wait;
    wait.run("gdbus", {"wait", "--system", name}, environment());
    process->await([&] { return wait.state() == QProcess::NotRunning; });
    EXPECT_EQ(wait.exitCode(), 0) << wait.errors().toStdString();
}

void BusRig::waitUntilSaid(const QByteArray &text)
{
    m_service.await([&] { return m_service.readAllStandardOutput().contains(text); });
}

QString BusRig::call(const QStringList &arguments, const QString &name) const
{
    Process process;
    process.run("gdbus",
        QStringList{"call", "--system", "--dest", name.isEmpty() ? m_name : name, "--object-path",
            arguments.first(), "--method"}
            + arguments.mid(1),
        environment());
    process.awaitEnd();
    EXPECT_EQ(process.exitCode(), 0) << process.errors().toStdString();
    return QString::fromUtf8(process.readAll());
}

namespace {

const QString Battery = "/sys/devices/platform/bms/power_supply/battery";

const QByteArray PowerSupplies = R"(P: /devices/platform/bms/power_supply/battery
E: SUBSYSTEM=power_supply
E: POWER_SUPPLY_NAME=battery
A: type=Battery\n
A: present=1\n
A: status=Discharging\n
A: energy_full=12000000\n
A: energy_full_design=15000000\n
A: energy_now=9600000\n
A: voltage_now=3900000\n
A: charge_full=3100000\n
A: capacity=80\n
A: cycle_count=42\n
A: temp=253\n
A: health=Good\n

P: /devices/platform/charger/power_supply/usb
E: SUBSYSTEM=power_supply
E: POWER_SUPPLY_NAME=usb
A: type=Mains\n
A: online=0\n

)";

} // namespace

UPowerRig::UPowerRig()
    : BusRig("battery=upower", "org.freedesktop.UPower", {"/usr/libexec/upowerd"}, PowerSupplies)
{
}

void UPowerRig::change(bool there)
{
    setLevel(there ? 70 : FirstLevel);
}

void UPowerRig::setLevel(int percent)
{
    devices().set(Battery, "capacity", QString::number(percent));
    devices().set(Battery, "energy_now", QString::number(percent * 120'000));
    devices().event(Battery, "change");
}

void UPowerRig::hangKernel()
{
    devices().hang(Battery + "/health", [this] { setLevel(75); });
}

namespace {

const QString Card = "/sys/devices/platform/mmc/mmc_host/mmc1/mmc1:aaaa/block/mmcblk1";
const QString CardPartition = Card + "/mmcblk1p1";

const QByteArray Cards = R"(P: /devices/platform/mmc/mmc_host/mmc1/mmc1:aaaa
E: SUBSYSTEM=mmc
A: type=SD\n
A: name=SU08G\n
A: serial=0x1234\n

P: /devices/platform/mmc/mmc_host/mmc1/mmc1:aaaa/block/mmcblk1
N: mmcblk1
E: SUBSYSTEM=block
E: DEVTYPE=disk
E: DEVNAME=/dev/mmcblk1
E: MAJOR=179
E: MINOR=8
E: ID_NAME=SU08G
E: ID_SERIAL=0x1234
E: ID_DRIVE_FLASH_SD=1
E: ID_DRIVE_MEDIA_FLASH_SD=1
E: ID_PART_TABLE_TYPE=dos
A: dev=179:8\n
A: size=15523840\n
A: removable=0\n
A: stat=10 0 0 0 5 0 0 0 0 0 0\n

P: /devices/platform/mmc/mmc_host/mmc1/mmc1:aaaa/block/mmcblk1/mmcblk1p1
N: mmcblk1p1
E: SUBSYSTEM=block
E: DEVTYPE=partition
E: DEVNAME=/dev/mmcblk1p1
E: MAJOR=179
E: MINOR=9
E: ID_FS_USAGE=filesystem
E: ID_FS_TYPE=ext4
E: ID_PART_ENTRY_SCHEME=dos
E: ID_PART_ENTRY_NUMBER=1
E: ID_PART_ENTRY_DISK=179:8
A: dev=179:9\n
A: partition=1\n
A: size=15521792\n

)";

} // namespace

UDisksRig::UDisksRig()
    : BusRig("sdcard=udisks2", "org.freedesktop.UDisks2", {"/usr/libexec/udisks2/udisksd"}, Cards)
{
    mount("/media/card");
}

QProcessEnvironment UDisksRig::environment() const
{
    QProcessEnvironment environment = BusRig::environment();
    environment.insert("PATH", m_tools.path() + ':' + environment.value("PATH"));
    return environment;
}

void UDisksRig::start()
{
    BusRig::start();
    devices().event(Card, "add");
    devices().event(CardPartition, "add");
    awaitMountPoints();
}

void UDisksRig::change(bool there)
{
    mount(there ? "" : "/media/card");
    devices().event(CardPartition, "change");
    awaitMountPoints();
}

// UDisks2 probes a device in a thread of its own, some time after it has heard the event.
void UDisksRig::awaitMountPoints()
{
    const QByteArray expected = m_place.isEmpty() ? "(<@aay []>,)" : "(<[b'" + m_place + "']>,)";
    QByteArray found;
    EXPECT_TRUE(waitUntil([&] {
        Process ask;
        ask.run("gdbus",
            {"call", "--system", "--dest", "org.freedesktop.UDisks2", "--object-path",
                "/org/freedesktop/UDisks2/block_devices/mmcblk1p1", "--method",
                "org.freedesktop.DBus.Properties.Get", "org.freedesktop.UDisks2.Filesystem", "MountPoints"},
            environment());
        ask.awaitEnd();
        found = ask.readAll().trimmed();
        return found == expected;
    })) << found.toStdString();
}

void UDisksRig::mount(const QByteArray &place)
{
    m_place = place;
    devices().write("/proc/self/mountinfo",
        place.isEmpty() ? "" : "36 25 179:9 / " + place + " rw,relatime shared:1 - ext4 /dev/mmcblk1p1 rw\n");
}

void UDisksRig::startJob()
{
    const QString end = m_tools.filePath("end");
    ASSERT_EQ(::mkfifo(end.toLocal8Bit().constData(), 0600), 0);
    QFile tool(m_tools.filePath("e2fsck"));
    ASSERT_TRUE(tool.open(QIODevice::WriteOnly));
    tool.write("#!/bin/sh\nread line <" + end.toLocal8Bit() + '\n');
    tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    tool.close();
    // Which it looks for itself.
    Process format;
    format.run("/sbin/mke2fs", {"-q", "-F", devices().file("/dev/mmcblk1p1"), "1M"});
    format.awaitEnd();
    ASSERT_EQ(format.exitCode(), 0) << format.errors().toStdString();
    m_job.run("gdbus",
        {"call", "--system", "--dest", "org.freedesktop.UDisks2", "--object-path",
            "/org/freedesktop/UDisks2/block_devices/mmcblk1p1", "--method",
            "org.freedesktop.UDisks2.Filesystem.Check", "{}"},
        environment());
}

void UDisksRig::endJob()
{
    const QByteArray end = m_tools.filePath("end").toLocal8Bit();
    int descriptor = -1;
    EXPECT_TRUE(waitUntil([&] {
        descriptor = ::open(end.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return descriptor >= 0;
    })) << "nobody waits for the end of the job";
    ::close(descriptor);
}

void UDisksRig::readCard(bool reads)
{
    devices().set(Card, "stat", reads ? "10 0 0 0 5 0 0 0 1 0 0" : "10 0 0 0 5 0 0 0 0 0 0");
}

void UDisksRig::hangKernel()
{
    devices().hang(Card + "/stat", [] {}); // as it is read each second
}

void UDisksRig::pullCard()
{
    for (const QString &device : {CardPartition, Card})
        devices().event(device, "remove");
}

namespace {

const QByteArray Machine = R"(P: /devices/virtual/dmi/id
E: SUBSYSTEM=dmi
A: product_name=Rig 2\n
A: product_sku=R2-100\n
A: product_serial=To Be Filled By O.E.M.\n
A: board_name=rig-board\n

P: /devices/LNXSYSTM:00/LNXPWRBN:00/input/input0
E: SUBSYSTEM=input
E: ID_INPUT=1
E: ID_INPUT_KEY=1

P: /devices/platform/gpu/drm/card0
E: SUBSYSTEM=drm

P: /devices/platform/gpu/drm/card0/card0-eDP-1
E: SUBSYSTEM=drm

)";

const QString PowerButton = "/sys/devices/LNXSYSTM:00/LNXPWRBN:00/input/input0";
const QString Keyboard = "/sys/devices/platform/usb1/input/input7";

} // namespace

HardwareRig::HardwareRig()
    : BusRig("hardware=linux", "org.freedesktop.hostname1", {"/lib/systemd/systemd-hostnamed"}, Machine)
{
    devices().write("/proc/cpuinfo",
        "processor\t: 0\nmodel name\t: Rig core\ncpu MHz\t\t: 1199.7\n\n"
        "processor\t: 1\nmodel name\t: Rig core\ncpu MHz\t\t: 800.0\n\nHardware\t: Rig\n");
    devices().write("/sys/devices/system/cpu/present", "0-2\n");
    devices().write("/sys/devices/system/cpu/cpu1/cpufreq/cpuinfo_max_freq", "2400000\n");
}

QProcessEnvironment HardwareRig::environment() const
{
    QProcessEnvironment environment = BusRig::environment();
    environment.insert("SYSTEMD_HOSTNAME_FORCE_DMI", "1"); // in a container too
    return environment;
}

void HardwareRig::change(bool there)
{
    if (there) {
        devices().add("P: " + Keyboard.mid(4).toUtf8()
            + "\nE: SUBSYSTEM=input\nE: ID_INPUT=1\nE: ID_INPUT_KEYBOARD=1\n\n");
        devices().event(Keyboard, "add");
    } else {
        devices().remove(Keyboard);
        // The kernel, too, tells of what is gone, but umockdev of what is there alone.
        devices().event(PowerButton, "change");
    }
}

void HardwareRig::placeDeviceTree()
{
    const QString tree = "/sys/firmware/devicetree/base/";
    devices().write(tree + "model", QByteArrayLiteral("Maker Phone 5\0"));
    devices().write(tree + "compatible", QByteArrayLiteral("maker,phone-5\0maker,soc\0"));
    devices().write(tree + "serial-number", QByteArrayLiteral("0123456789\0"));
    devices().write(tree + "hdmi-out/compatible", QByteArrayLiteral("hdmi-connector\0"));
    devices().write(tree + "hdmi-out/type", QByteArrayLiteral("d\0"));
}

LogindRig::LogindRig()
    : BusRig("activity=logind", "org.freedesktop.login1",
        {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"}, {})
{
}

void LogindRig::start()
{
    BusRig::start();
    call({"/org/freedesktop/login1", "org.freedesktop.DBus.Mock.AddSession", "c1", "seat0", "1000", "user",
        "true"});
    // As the service itself tells of a seat, unlike its stand-in.
    call({"/org/freedesktop/login1", "org.freedesktop.DBus.Mock.EmitSignal", "org.freedesktop.login1.Manager",
        "SeatNew", "so", "[<'seat0'>, <objectpath '/org/freedesktop/login1/seat/seat0'>]"});
}

void LogindRig::change(bool there)
{
    call({"/org/freedesktop/login1/seat/seat0", "org.freedesktop.DBus.Mock.UpdateProperties",
        "org.freedesktop.login1.Seat", QString("{'IdleHint': <%1>}").arg(there ? "true" : "false")});
}

void LogindRig::endSession()
{
    call({"/org/freedesktop/login1/seat/seat0", "org.freedesktop.DBus.Mock.UpdateProperties",
        "org.freedesktop.login1.Seat", "{'Sessions': <@a(so) []>}"});
}

namespace {

const QString Accelerometer = "/sys/devices/platform/accel/iio:device0";

const QByteArray Sensors = R"(P: /devices/platform/accel/iio:device0
N: iio:device0
E: SUBSYSTEM=iio
E: DEVNAME=/dev/iio:device0
E: DEVTYPE=iio_device
E: IIO_SENSOR_PROXY_TYPE=iio-poll-accel
A: name=accel_3d\n
A: in_accel_x_raw=0\n
A: in_accel_y_raw=-256\n
A: in_accel_z_raw=0\n
A: in_accel_scale=0.038\n

)";

} // namespace

SensorRig::SensorRig()
    : BusRig(
        "orientation=iio-sensor-proxy", "net.hadess.SensorProxy", {"/usr/sbin/iio-sensor-proxy"}, Sensors)
{
}

void SensorRig::change(bool there)
{
    devices().set(Accelerometer, "in_accel_x_raw", there ? "256" : "0");
    devices().set(Accelerometer, "in_accel_y_raw", there ? "0" : "-256");
}

QProcessEnvironment SensorRig::environment() const
{
    QProcessEnvironment environment = BusRig::environment();
    environment.insert("G_MESSAGES_DEBUG", "all"); // it tells of its clients in no other way
    return environment;
}

void SensorRig::waitForRelease()
{
    waitUntilSaid("'ReleaseAccelerometer'");
}

RigTest::RigTest(std::unique_ptr<Rig> service, std::optional<int> graceTime) : rig(std::move(service))
{
    qputenv("OZ_GRACE_TIME", QByteArray::number(graceTime.value_or(rig->graceTime())));
}

RigTest::~RigTest()
{
    daemon.terminate();
    EXPECT_TRUE(daemon.state() == QProcess::NotRunning || daemon.waitForFinished());
}

void RigTest::startDaemon(const QStringList &arguments)
{
    daemon.setProcessEnvironment(rig->environment());
    daemon.start(OZ_DAEMON, QStringList{"--config", "/dev/null"} + rig->arguments() + arguments);
    awaitDaemon(&daemon);
}

QString RigTest::sourceOf(const QString &facility)
{
    const QVariantMap state =
        attributesOf("/pps/system/ozdeviced/status").value("facilities").toMap().value(facility).toMap();
    const QString reason = state.value("reason").toString();
    return state.value("state").toString() + (reason.isEmpty() ? "" : ": ") + reason;
}

SwayRig::SwayRig()
{
    QFile configuration(m_folder.filePath("config"));
    EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write("output HEADLESS-1 mode 800x600\n");
    configuration.setPermissions(configuration.permissions() | QFile::ReadOther);
    giveToNobody(m_folder.path());
}

void SwayRig::start()
{
    QFile::remove(socket()); // it takes no other's place
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", m_folder.path());
    environment.insert("XDG_RUNTIME_DIR", m_folder.path());
    environment.insert("SWAYSOCK", socket());
    environment.insert("WLR_BACKENDS", "headless");
    environment.insert("WLR_LIBINPUT_NO_DEVICES", "1");
    environment.insert("WLR_RENDERER", "pixman");
    const QStringList program = asNobody({"sway", "-c", m_folder.filePath("config")});
    m_compositor.run(program.first(), program.mid(1), environment);
    m_compositor.await([this] { return order({"output", "HEADLESS-1", "enable"}); });
}

bool SwayRig::order(const QStringList &words)
{
    const QStringList program = asNobody(QStringList{"swaymsg", "-s", socket()} + words);
    Process process;
    process.run(program.first(), program.mid(1));
    process.awaitEnd();
    return process.exitCode() == 0;
}

void SwayRig::change(bool there)
{
    EXPECT_TRUE(order({"output", "HEADLESS-1", "mode", there ? "1024x768" : "800x600"}));
}

namespace {
const QString ModemManagerName = "org.freedesktop.ModemManager1";
}

ModemRig::ModemRig(const QString &facility)
    : BusRig(facility + "=modemmanager", ModemManagerName,
        {"ModemManager", "--test-session", "--no-auto-scan", "--test-enable", "--test-no-udev",
            "--test-no-suspend-resume", "--test-no-qrtr"},
        {}),
      modem(QStringLiteral("oz-modem-%1-").arg(::getpid()))
{
}

void ModemRig::start()
{
    BusRig::start();
    plug(modem, "phone");
    // One that waits for its PIN cannot be enabled; one that is enabled asks for the network's name last.
    const auto isReady = [this] {
        if (!modem.pin.isEmpty())
            return order({"--modem=any"}).contains("sim-pin");
        (void)order({"--modem=any", "--enable"});
        return order({"--modem=any"}).contains("Test Home");
    };
    EXPECT_TRUE(waitUntil(isReady));
}

void ModemRig::plug(const AtModem &plugged, const QString &name)
{
    (void)call({"/org/freedesktop/ModemManager1", ModemManagerName + ".Test.SetProfile", name, plugin,
        "['" + plugged.ports().join("', '") + "']"});
}

void ModemRig::unplug(bool isOut)
{
    if (!isOut) {
        m_inhibitor.end();
        return;
    }
    m_inhibitor.run("mmcli", {"--inhibit-device=/virtual/phone"}, environment());
    EXPECT_TRUE(waitUntil([this] { return order({"--list-modems"}).contains("No modems"); }));
}

// The modem answers from this process's event loop.
QString ModemRig::order(const QStringList &words) const
{
    Process process;
    process.run("mmcli", words, environment());
    process.awaitEnd();
    return process.exitCode() == 0 ? QString::fromUtf8(process.readAll()) : QString();
}

void ModemRig::change(bool there)
{
    modem.registerIn(there ? AtModem::Roaming : AtModem::Home, there ? AtModem::Umts : AtModem::Lte);
}

void MobileDataRig::start()
{
    allowAll();
    ModemRig::start();
    const QString name = "org.freedesktop.NetworkManager";
    runOnBus(&m_manager, {"unshare", "--mount", "--net", QString(OZ_RIG_SCRIPTS) + "/networkmanager"}, name);
    (void)call({"/org/freedesktop/NetworkManager/Settings", name + ".Settings.AddConnection",
                   "{'connection': {'id': <'Internet'>, 'type': <'gsm'>, 'autoconnect': <false>, 'uuid': "
                   "<'6e1e0ac2-1111-4111-8111-111111111111'>}, 'gsm': {'apn': <'internet.example'>}}"},
        name);
}

void MobileDataRig::hangUp()
{
    Process hangUp;
    hangUp.run("pkill", {"--parent", QString::number(m_manager.processId()), "pppd"}, environment());
    hangUp.awaitEnd();
    EXPECT_EQ(hangUp.exitCode(), 0) << "there was no connection";
}

namespace {

const QString ModemManagerPath = "/org/freedesktop/ModemManager1";

QString cardPath(int slot)
{
    return ModemManagerPath + "/SIM/" + QString::number(slot);
}

} // namespace

TwoSlotRig::TwoSlotRig()
    : BusRig("simcard=modemmanager", ModemManagerName,
        {"/usr/bin/python3", "-m", "dbusmock", "--system", "--is-object-manager", ModemManagerName,
            ModemManagerPath, ModemManagerName},
        {})
{
}

void TwoSlotRig::start()
{
    BusRig::start();
    const auto add = [this](const QString &path, const QString &interface, const QString &properties) {
        const QString name = ModemManagerName + '.' + interface;
        (void)call({ModemManagerPath, "org.freedesktop.DBus.Mock.AddObject", path, name,
            '{' + properties + '}', "[]"});
        // As the service itself tells of an object, unlike its stand-in.
        (void)call({ModemManagerPath, "org.freedesktop.DBus.Mock.EmitSignal",
            "org.freedesktop.DBus.ObjectManager", "InterfacesAdded", "oa{sa{sv}}",
            QString("[<objectpath '%1'>, <{'%2': {%3}}>]").arg(path, name, properties)});
    };
    for (int slot : {1, 2}) {
        const QString number = QString::number(slot);
        const QString network = "0010" + number;
        add(cardPath(slot), "Sim",
            "'SimIdentifier': <'894901000000000000" + number + "'>, 'Imsi': <'" + network + "000000000"
                + number + "'>, 'OperatorIdentifier': <'" + network + "'>");
    }
    add(ModemManagerPath + "/Modem/0", "Modem",
        QString("'Sim': <objectpath '%1'>, 'SimSlots': <[objectpath '%1', '%2']>, "
                "'State': <8>, 'UnlockRequired': <uint32 1>")
            .arg(cardPath(1), cardPath(2)));
}

void TwoSlotRig::change(bool there)
{
    (void)call({ModemManagerPath + "/Modem/0", "org.freedesktop.DBus.Properties.Set",
        ModemManagerName + ".Modem", "Sim", QString("<objectpath '%1'>").arg(cardPath(there ? 2 : 1))});
}

namespace {
const QString NetworkManagerName = "org.freedesktop.NetworkManager";
const QString NetworkManagerPath = "/org/freedesktop/NetworkManager";
} // namespace

NetworkManagerRig::NetworkManagerRig()
    : BusRig("data-profile=networkmanager", NetworkManagerName,
        {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "networkmanager"}, {})
{
}

QString NetworkManagerRig::call(
    const QString &path, const QString &method, const QStringList &arguments) const
{
    return BusRig::call(QStringList{path, method} + arguments).section('\'', 1, 1);
}

void NetworkManagerRig::start()
{
    BusRig::start();
    // The template has no modems; what a connection is over makes no difference to it.
    (void)call(NetworkManagerPath, "org.freedesktop.DBus.Mock.AddEthernetDevice", {"modem", "wwan0", "30"});
    m_connection = call(NetworkManagerPath + "/Settings", NetworkManagerName + ".Settings.AddConnection",
        {"{'connection': {'id': <'Internet (Home)'>, 'uuid': <'6e1e0ac2-1'>, 'type': <'gsm'>, "
         "'autoconnect': <false>}, 'gsm': {'apn': <'internet.example'>}}"});
}

void NetworkManagerRig::change(bool there)
{
    if (there) {
        m_active = call(NetworkManagerPath, NetworkManagerName + ".ActivateConnection",
            {m_connection, NetworkManagerPath + "/Devices/modem", "/"});
    } else {
        (void)call(NetworkManagerPath, NetworkManagerName + ".DeactivateConnection", {m_active});
    }
}

void NetworkManagerRig::goDown()
{
    (void)call(m_active, "org.freedesktop.DBus.Mock.UpdateProperties",
        {NetworkManagerName + ".Connection.Active", "{'State': <uint32 3>}"});
}

void NetworkManagerRig::refuse()
{
    (void)call(NetworkManagerPath, "org.freedesktop.DBus.Mock.AddMethod",
        {NetworkManagerName, "ActivateConnection", "ooo", "o",
            "raise dbus.exceptions.DBusException('not for you', name='" + NetworkManagerName
                + ".PermissionDenied')"});
}

WpaSupplicantRig::WpaSupplicantRig()
    : BusRig("wifi-direct=wpa-supplicant", "fi.w1.wpa_supplicant1",
        {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template",
            QString(OZ_RIG_SCRIPTS) + "/wpa_supplicant.py"},
        "P: /devices/platform/radio/net/wlan0\nE: SUBSYSTEM=net\nE: INTERFACE=wlan0\nA: "
        "phy80211/name=phy0\n\n")
{
}

void WpaSupplicantRig::change(bool there)
{
    EXPECT_TRUE(waitUntil([&] { return happen("HasRadio").contains("true"); })) << "nobody has taken it up";
    (void)happen("Become", {there ? "interface_disabled" : "inactive"});
}

QString WpaSupplicantRig::happen(const QString &what, const QStringList &arguments) const
{
    return call(QStringList{"/fi/w1/wpa_supplicant1", "oz.Radio." + what} + arguments);
}

} // namespace oz::harness
