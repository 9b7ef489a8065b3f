// A change at a real service to the signal of the class, beside a client of that service's own interface on
// the bus, in one run; and what a daemon on real sources does while nothing changes. The service is the real
// UPower over a battery that umockdev plays.

#include "Processes.hpp"
#include "Report.hpp"

#include "services/Rigs.hpp"

#include <oz/device/BatteryInfo.hpp>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QVariantMap>

#include <cstdio>

using namespace oz;
using namespace oz::bench;

namespace {

// Hears of the battery's level as any client of UPower does.
class BusClient : public QObject
{
    Q_OBJECT

public:
    explicit BusClient(const QDBusConnection &bus) : m_bus(bus)
    {
        m_bus.connect("org.freedesktop.UPower", {}, "org.freedesktop.DBus.Properties", "PropertiesChanged",
            this, SLOT(onChanged(QString, QVariantMap, QStringList)));
    }
    double heardAt = 0;
    int messages = 0;

private Q_SLOTS:
    void onChanged(const QString &, const QVariantMap &changes, const QStringList &)
    {
        ++messages;
        if (changes.contains("Percentage") && heardAt == 0)
            heardAt = now();
    }

private:
    QDBusConnection m_bus;
};

// How often a process has been woken: it went to sleep as often.
qint64 sleepsOf(qint64 process)
{
    QFile status(QString("/proc/%1/status").arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("voluntary_ctxt_switches:"))
            return line.mid(24).trimmed().toLongLong();
    }
    return -1;
}

void idle(int milliseconds)
{
    (void)oz::harness::waitUntil([] { return false; }, milliseconds);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    RunOptions options = runOptions(argc, argv);
    options.rounds = std::min(options.rounds, 200); // a change of the battery is a matter of milliseconds
    const oz::harness::DeviceRoot root;
    oz::harness::UPowerRig rig;
    rig.start();
    oz::harness::Process daemon;
    // umockdev gives a device's events to one alone of those who watch with a descriptor of the same number,
    // so that UPower can miss them all where the daemon watches too.
    QStringList words{"--config", "/dev/null", "--source", "battery=upower"};
    for (const char *watching : {"hardware=none", "led=none", "vibration=none"})
        words += {"--source", watching};
    daemon.run(QCoreApplication::applicationDirPath() + "/ozdeviced", words, rig.environment());
    oz::harness::awaitDaemon(&daemon);
    const QByteArray address = rig.environment().value("DBUS_SYSTEM_BUS_ADDRESS").toLocal8Bit();
    BusClient client(QDBusConnection::connectToBus(QString::fromLocal8Bit(address), "bench"));
    device::BatteryInfo battery;
    double heardAt = 0;
    QObject::connect(
        &battery, qOverload<int, int>(&device::BatteryInfo::levelChanged), [&] { heardAt = now(); });
    // UPower misses what changes while it starts.
    if (!oz::harness::waitUntil([&] { return battery.level() == oz::harness::UPowerRig::FirstLevel; }))
        return 1;

    Samples byClass{"battery: change at the kernel to signal", {}};
    Samples byBus{"battery: change at the kernel to UPower's client", {}};
    for (int i = 0; i < options.rounds; ++i) {
        heardAt = client.heardAt = 0;
        const double begun = now();
        rig.setLevel(20 + i % 60);
        if (!oz::harness::waitUntil([&] { return heardAt > 0 && client.heardAt > 0; })) {
            std::fprintf(stderr, "change %d was not heard by %s\n", i,
                heardAt > 0 ? "the client of UPower" : "the class");
            return 1;
        }
        byClass.values.push_back(heardAt - begun);
        byBus.values.push_back(client.heardAt - begun);
    }
    for (const Samples *samples : {&byClass, &byBus}) {
        std::printf("  %-54s median %7.1f us   p99 %7.1f\n", samples->name.c_str(), samples->median(),
            samples->percentile(0.99));
    }
    const std::vector<Ratio> ratios{ratioOf("battery / client of UPower, median", byClass, byBus, 0.5, 2),
        ratioOf("battery / client of UPower, p99", byClass, byBus, 0.99, 0)};
    const bool isReached = print(ratios);
    if (!options.json.empty())
        writeJson(options.json, "us", {byClass, byBus}, ratios);

    constexpr int Idle = 20;
    idle(6000); // what the last change still has the service do
    client.messages = 0;
    const qint64 before = sleepsOf(daemon.processId());
    idle(Idle * 1000);
    const qint64 woken = sleepsOf(daemon.processId()) - before;
    std::printf("  the daemon was woken %lld times in %d s, in which UPower sent %d messages\n",
        qlonglong(woken), Idle, client.messages);
    // A message may wake it for itself and for what the kernel tells then.
    return isReached && woken <= 3 * client.messages ? 0 : 1;
}

#include "Sources.moc"
