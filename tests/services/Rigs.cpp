#include "services/Rigs.hpp"

#include <QFile>

#include <csignal>
#include <unistd.h>

namespace oz::testing {

Process::~Process()
{
    end();
}

void Process::run(
    const QString &program, const QStringList &arguments, const QProcessEnvironment &environment)
{
    setProcessEnvironment(environment);
    setStandardErrorFile(QProcess::nullDevice());
    start(program, arguments);
    EXPECT_TRUE(waitForStarted()) << program.toStdString() << " is not installed (./oz setup)";
}

void Process::end()
{
    if (state() == QProcess::NotRunning)
        return;
    kill();
    waitForFinished();
}

void Process::stall(bool stalls)
{
    ::kill(pid_t(processId()), stalls ? SIGSTOP : SIGCONT);
}

QString Process::line()
{
    EXPECT_TRUE(waitUntil([this] { return canReadLine() || waitForReadyRead(1); }))
        << program().toStdString();
    return QString::fromUtf8(readLine()).trimmed();
}

bool Process::hasEnded()
{
    return waitUntil([this] { return state() == QProcess::NotRunning; });
}

PrivateBus::PrivateBus()
{
    m_daemon.run("dbus-daemon", {"--session", "--print-address", "--nofork"},
        QProcessEnvironment::systemEnvironment());
    m_address = m_daemon.line();
}

void PrivateBus::enter(QProcessEnvironment *environment) const
{
    environment->insert("DBUS_SYSTEM_BUS_ADDRESS", m_address);
    environment->insert("DBUS_SESSION_BUS_ADDRESS", m_address);
}

MockDevices::MockDevices(const QByteArray &description)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", "libumockdev-preload.so.0");
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
    environment->insert("LD_PRELOAD", "libumockdev-preload.so.0");
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

void BusRig::start()
{
    m_service.run(m_program.first(), m_program.mid(1), environment());
    EXPECT_TRUE(waitUntil([this] {
        QProcess ask;
        ask.setProcessEnvironment(environment());
        ask.start("dbus-send",
            {"--system", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                "org.freedesktop.DBus.GetNameOwner", "string:" + m_name});
        return ask.waitForFinished() && ask.exitCode() == 0;
    })) << m_program.first().toStdString();
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
    setLevel(there ? 70 : 80);
}

void UPowerRig::setLevel(int percent)
{
    devices().set(Battery, "capacity", QString::number(percent));
    devices().set(Battery, "energy_now", QString::number(percent * 120'000));
    devices().event(Battery, "change");
}

namespace {
constexpr uid_t Nobody = 65534;
}

SwayRig::SwayRig()
{
    QFile configuration(m_folder.filePath("config"));
    EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write("output HEADLESS-1 mode 800x600\n");
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown(qPrintable(m_folder.path()), Nobody, Nobody), 0);
        configuration.setPermissions(configuration.permissions() | QFile::ReadOther);
    }
}

QStringList SwayRig::asUser(const QStringList &program)
{
    if (::geteuid() != 0)
        return program;
    const QString id = QString::number(Nobody);
    return QStringList{"setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups"} + program;
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
    const QStringList program = asUser({"sway", "-c", m_folder.filePath("config")});
    m_compositor.run(program.first(), program.mid(1), environment);
    EXPECT_TRUE(waitUntil([this] { return order({"output", "HEADLESS-1", "enable"}); })) << "sway";
}

bool SwayRig::order(const QStringList &words)
{
    const QStringList program = asUser(QStringList{"swaymsg", "-s", socket()} + words);
    QProcess process;
    process.start(program.first(), program.mid(1));
    return process.waitForFinished() && process.exitCode() == 0;
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
    plug();
    // One that waits for its PIN cannot be enabled; one that is enabled asks for the network's name last.
    const auto isReady = [this] {
        if (!modem.pin.isEmpty())
            return order({"--modem=any"}).contains("sim-pin");
        (void)order({"--modem=any", "--enable"});
        return order({"--modem=any"}).contains("Test Home");
    };
    EXPECT_TRUE(waitUntil(isReady));
}

void ModemRig::plug()
{
    Process process;
    process.run("dbus-send",
        {"--system", "--print-reply", "--dest=" + ModemManagerName, "/org/freedesktop/ModemManager1",
            ModemManagerName + ".Test.SetProfile", "string:phone", "string:generic",
            "array:string:" + modem.ports().join(',')},
        environment());
    EXPECT_TRUE(process.hasEnded());
}

// The modem answers from this process's event loop.
QString ModemRig::order(const QStringList &words) const
{
    Process process;
    process.run("mmcli", words, environment());
    return process.hasEnded() && process.exitCode() == 0 ? QString::fromUtf8(process.readAll()) : QString();
}

void ModemRig::change(bool there)
{
    modem.registerIn(there ? AtModem::Roaming : AtModem::Home, there ? AtModem::Umts : AtModem::Lte);
}

} // namespace oz::testing
