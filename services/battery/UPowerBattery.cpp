#include "battery/UPowerBattery.hpp"

#include "linux/Worker.hpp"

#include <QDir>

#include <algorithm>
#include <chrono>

namespace oz::services {

namespace {

const QString ManagerPath = QStringLiteral("/org/freedesktop/UPower");
const QString ManagerInterface = QStringLiteral("org.freedesktop.UPower");
const QString DeviceInterface = QStringLiteral("org.freedesktop.UPower.Device");
const QString PowerSupplies = QStringLiteral("/sys/class/power_supply");

// A kernel that is slow, as over a slow controller, keeps no news of the service back for longer.
constexpr std::chrono::milliseconds KernelTimeout(200);

// UPower's numbers.
enum Type { LinePower = 1, BatteryType = 2 };
enum State {
    IsCharging = 1,
    IsDischarging = 2,
    IsEmpty = 3,
    IsFullyCharged = 4,
    IsPendingCharge = 5,
    IsPendingDischarge = 6
};

std::optional<Battery::Charging> chargingOf(uint state)
{
    switch (state) {
    case IsCharging:
        return Battery::Charging::Yes;
    case IsFullyCharged:
        return Battery::Charging::Full;
    case IsDischarging:
    case IsEmpty:
    case IsPendingCharge:
    case IsPendingDischarge:
        return Battery::Charging::No;
    default:
        return std::nullopt;
    }
}

// The kernel's health: good, unknown, or what is wrong with it.
std::optional<Battery::Condition> conditionOf(const QString &health)
{
    if (health.isEmpty() || health == u"Unknown")
        return std::nullopt;
    return health == u"Good" ? Battery::Condition::Good : Battery::Condition::Bad;
}

// The kernel's units are millionths of Ah, of Wh and of V.
std::optional<int> milliampereHours(const SysFolder::Values &battery)
{
    if (const auto charge = SysFolder::number(battery, QStringLiteral("charge_full")))
        return qRound(*charge / 1000);
    const auto energy = SysFolder::number(battery, QStringLiteral("energy_full"));
    const auto voltage = SysFolder::number(battery, QStringLiteral("voltage_min_design"));
    if (energy && voltage && *voltage > 0)
        return qRound(*energy / *voltage * 1000);
    return std::nullopt;
}

// The wireless receiver: the kernel has no other identifier of it than its serial number or name.
QString receiverOnCharger()
{
    const QStringList supplies = QDir(PowerSupplies).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString &supply : supplies) {
        const auto values = SysFolder::readFiles(PowerSupplies + u'/' + supply,
            {QStringLiteral("type"), QStringLiteral("online"), QStringLiteral("serial_number")});
        if (values.value(QStringLiteral("type")) != u"Wireless"
            || values.value(QStringLiteral("online")) != u"1")
            continue;
        const QString serial = values.value(QStringLiteral("serial_number"));
        return serial.isEmpty() ? supply : serial;
    }
    return {};
}

} // namespace

UPowerBattery::UPowerBattery(std::shared_ptr<SystemBus> bus, const QString &device)
    : BusSource(std::make_shared<BusService>(
        std::move(bus), QStringLiteral("org.freedesktop.UPower"), QStringLiteral("upower"))),
      m_device(device), m_reading(this, [this](const Kernel &kernel) {
          if (m_reading.isUnderWay())
              m_kernelTimeout.start();
          else
              m_kernelTimeout.stop();
          m_kernel = kernel;
          applyReading();
      })
{
    m_kernelTimeout.setSingleShot(true);
    m_kernelTimeout.setInterval(KernelTimeout);
    m_kernelTimeout.callOnTimeout(this, [this] { applyReading(); });
    objects().followList(
        ManagerPath, ManagerInterface, QStringLiteral("EnumerateDevices"), {DeviceInterface});
    service().hear(ManagerPath, ManagerInterface, QStringLiteral("DeviceAdded"), this,
        [this](const QDBusMessage &message) {
            objects().follow(message.arguments().value(0).value<QDBusObjectPath>().path(), {DeviceInterface});
        });
    service().hear(ManagerPath, ManagerInterface, QStringLiteral("DeviceRemoved"), this,
        [this](const QDBusMessage &message) {
            objects().forget(message.arguments().value(0).value<QDBusObjectPath>().path());
        });
}

QVariant UPowerBattery::of(const QString &path, const char *property) const
{
    return objects().property(path, DeviceInterface, QLatin1String(property));
}

QString UPowerBattery::batteryPath() const
{
    const auto rank = [this](const QString &path) {
        const uint state = of(path, "State").toUInt();
        return state == IsDischarging ? 0 : state == IsCharging ? 1 : of(path, "IsPresent").toBool() ? 2 : 3;
    };
    QStringList paths;
    for (const QString &path : objects().all().keys()) {
        const bool isWanted =
            m_device.isEmpty() || of(path, "NativePath").toString().section(u'/', -1) == m_device;
        if (isWanted && of(path, "Type").toUInt() == BatteryType && of(path, "PowerSupply").toBool())
            paths.append(path);
    }
    const auto best = std::min_element(paths.begin(), paths.end(),
        [&](const QString &one, const QString &other) { return rank(one) < rank(other); });
    return best == paths.end() ? QString() : *best;
}

void UPowerBattery::readState()
{
    const bool isLate = m_reading.isUnderWay() && !m_kernelTimeout.isActive();
    readKernel();
    if (isLate)
        applyReading();
}

void UPowerBattery::readKernel()
{
    const QString path = batteryPath();
    const QString folder = PowerSupplies + u'/' + of(path, "NativePath").toString().section(u'/', -1);
    if (!m_reading.isUnderWay())
        m_kernelTimeout.start();
    m_reading.begin([path, folder] {
        static const QStringList names{QStringLiteral("health"), QStringLiteral("charge_full"),
            QStringLiteral("energy_full"), QStringLiteral("voltage_min_design"),
            QStringLiteral("cycle_count"), QStringLiteral("temp")};
        return Kernel{path, path.isEmpty() ? SysFolder::Values() : SysFolder::readFiles(folder, names),
            receiverOnCharger()};
    });
}

Battery UPowerBattery::currentBattery() const
{
    const QString path = batteryPath();
    // The kernel's values are those of one battery; they say nothing about another.
    const SysFolder::Values kernel = m_kernel.path == path ? m_kernel.battery : SysFolder::Values();
    Battery battery;
    battery.wirelessReceiver = m_kernel.wirelessReceiver;
    int chargers = m_kernel.wirelessReceiver.isEmpty() ? 0 : 1;
    for (const QString &device : objects().all().keys()) {
        if (of(device, "Type").toUInt() == LinePower && of(device, "Online").toBool())
            ++chargers;
    }
    battery.chargers = chargers;
    if (path.isEmpty())
        return battery;
    battery.charging = chargingOf(of(path, "State").toUInt());
    if (!of(path, "IsPresent").toBool())
        return battery;
    battery.present = true;
    battery.level = qRound(of(path, "Percentage").toDouble());
    battery.condition = conditionOf(kernel.value(QStringLiteral("health")));
    battery.fullChargeCapacity = milliampereHours(kernel);
    // A driver that does not count reports 0 or less.
    const auto cycles = SysFolder::number(kernel, QStringLiteral("cycle_count"));
    if (const int told = of(path, "ChargeCycles").toInt(); told > 0)
        battery.cycleCount = told;
    else if (cycles && *cycles > 0)
        battery.cycleCount = int(*cycles);
    // Tenths of a degree; UPower's own 0 may be that it does not know.
    if (const auto tenths = SysFolder::number(kernel, QStringLiteral("temp")))
        battery.temperature = *tenths / 10;
    else if (const double told = of(path, "Temperature").toDouble(); told != 0)
        battery.temperature = told;
    return battery;
}

void UPowerBattery::applyReading()
{
    if (!objects().isComplete())
        return;
    const Battery battery = currentBattery();
    if (isPremature(battery))
        return;
    if (!m_device.isEmpty() && batteryPath().isEmpty())
        setAbsent(QLatin1String("UPower knows no battery '") + m_device + u'\'');
    else
        know(battery);
}

// A service that has just started may say 0 %, or nothing of the battery, before it has asked it.
bool UPowerBattery::isIncomplete(const Battery &now, const std::optional<Battery> &before) const
{
    return now.present ? now.level == 0 : before && before->present;
}

} // namespace oz::services
