// From a publish in one process to a signal in another, beside the bare file and beside the message bus, in
// one run.

#include "BareFiles.hpp"
#include "Report.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/device/SdCardInfo.hpp>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QVariantMap>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::bench;

namespace {

const char *const BusPath = "/sdcard";
const char *const BusInterface = "org.freedesktop.DBus.Properties";

double now()
{
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return double(time.tv_sec) * 1e6 + double(time.tv_nsec) / 1e3;
}

// Tells the other process that it is there, and then of each change, with the time at which it heard of it.
class Bell
{
public:
    explicit Bell(int descriptor) : m_descriptor(descriptor) { }
    void ring() const
    {
        const double heard = now();
        if (::write(m_descriptor, &heard, sizeof heard) != sizeof heard)
            ::_exit(1);
    }

private:
    int m_descriptor;
};

// The other process: this program again, in a role.
class Listener
{
public:
    Listener(const char *program, const char *role)
    {
        int ends[2];
        if (::pipe(ends) < 0)
            std::abort();
        m_pid = ::fork();
        if (m_pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::execl(program, program, "--role", role, std::to_string(ends[1]).c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        m_bell = ends[0];
        (void)heardAt();
    }
    ~Listener()
    {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
        ::close(m_bell);
    }
    // Waits for the next ring; the time at which the other process heard the change.
    [[nodiscard]] double heardAt() const
    {
        double heard = 0;
        if (::read(m_bell, &heard, sizeof heard) != sizeof heard) {
            std::fprintf(stderr, "bench: a listener died\n");
            std::exit(1);
        }
        return heard;
    }

private:
    pid_t m_pid = 0;
    int m_bell = -1;
};

// Hears a property change on the bus, and makes of it what the facility does: two values.
class BusCard : public QObject
{
    Q_OBJECT

public:
    explicit BusCard(Bell bell) : m_bell(bell) { }

public Q_SLOTS:
    void onPropertiesChanged(const QString &, const QVariantMap &changed, const QStringList &)
    {
        const bool mounted = changed.value("mounted").toBool();
        if (mounted != m_mounted) {
            m_mounted = mounted;
            m_bell.ring();
        }
    }

private:
    Bell m_bell;
    bool m_mounted = false;
};

int listen(const QString &role, const Bell &bell)
{
    if (role == "file")
        followFile(QFile::encodeName(devicePath("/bare/sdcard")).toStdString(), [&] { bell.ring(); });
    if (role == "sdcard") {
        device::SdCardInfo card;
        QObject::connect(&card, qOverload<device::SdCardState::Type>(&device::SdCardInfo::stateChanged),
            [&] { bell.ring(); });
        bell.ring();
        return QCoreApplication::exec();
    }
    BusCard card(bell);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.connect(QString(), BusPath, BusInterface, "PropertiesChanged", &card,
            SLOT(onPropertiesChanged(QString, QVariantMap, QStringList))))
        return 1;
    bell.ring();
    return QCoreApplication::exec();
}

// A message bus of this run's own.
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        if (!m_daemon.waitForReadyRead()) {
            std::fprintf(stderr, "bench: dbus-daemon: %s\n", qPrintable(m_daemon.errorString()));
            std::exit(1);
        }
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.readLine().trimmed());
    }
    ~PrivateBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

private:
    QProcess m_daemon;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == "--role")
        return listen(words.value(2), Bell(words.value(3).toInt()));
    std::string json;
    int rounds = 4000;
    for (int i = 1; i + 1 < words.size(); i += 2) {
        if (words[i] == "--json")
            json = words[i + 1].toStdString();
        else if (words[i] == "--rounds")
            rounds = words[i + 1].toInt();
    }

    const QTemporaryDir root("/dev/shm/oz-bench-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    const PrivateBus busDaemon;
    PpsPublisher publisher("/pps/system/filesystem/removable/sdcard");
    publisher.publish({{"mounted", false}, {"busy", false}});
    const std::string bare = (root.path() + "/bare/sdcard").toStdString();
    PpsPublisher("/bare/sdcard").publish({{"mounted", false}, {"busy", false}});
    QDBusConnection bus = QDBusConnection::sessionBus();

    struct Way
    {
        Samples samples;
        Listener listener;
        std::function<void(bool mounted)> change;
    };
    std::vector<std::unique_ptr<Way>> ways;
    const auto add = [&](const char *name, const char *role, std::function<void(bool)> change) {
        ways.emplace_back(new Way{{name, {}}, Listener(argv[0], role), std::move(change)});
    };
    add("file: replace to read", "file", [&](bool mounted) {
        replaceFile(bare,
            mounted ? "@sdcard\nbusy:b:false\nmounted:b:true\n" : "@sdcard\nbusy:b:false\nmounted:b:false\n");
    });
    add("SdCardInfo: publish to signal", "sdcard", [&](bool mounted) {
        publisher.publish({{"mounted", mounted}, {"busy", false}});
    });
    add("message bus: property change to slot", "bus", [&](bool mounted) {
        QDBusMessage change = QDBusMessage::createSignal(BusPath, BusInterface, "PropertiesChanged");
        change << "oz.SdCard" << QVariantMap{{"mounted", mounted}, {"busy", false}} << QStringList();
        bus.send(change);
    });

    // The ways take turns, so that whatever else the machine does falls on all of them.
    for (int round = 0; round < rounds + 200; ++round) {
        for (const auto &way : ways) {
            const double begun = now();
            way->change(round % 2 == 0);
            const double latency = way->listener.heardAt() - begun;
            if (round >= 200)
                way->samples.values.push_back(latency);
        }
    }
    std::vector<Samples> samples;
    std::printf("From one process to another, microseconds (%d rounds, in turns)\n", rounds);
    for (const auto &way : ways) {
        samples.push_back(way->samples);
        std::printf("  %-40s median %7.1f   p10 %7.1f   p90 %7.1f   p99 %7.1f\n", way->samples.name.c_str(),
            way->samples.median(), way->samples.percentile(0.1), way->samples.percentile(0.9),
            way->samples.percentile(0.99));
    }
    const auto ratio = [&](const char *name, std::size_t over, std::size_t under, double share, double aim) {
        return Ratio{name, samples[over].percentile(share) / samples[under].percentile(share), aim};
    };
    const std::vector<Ratio> ratios{
        ratio("SdCardInfo / file, median", 1, 0, 0.5, 2),
        ratio("SdCardInfo / file, p99", 1, 0, 0.99, 2),
        ratio("SdCardInfo / message bus, median", 1, 2, 0.5, 0.5),
        ratio("SdCardInfo / message bus, p99", 1, 2, 0.99, 0.5),
    };
    print(ratios);
    if (!json.empty())
        writeJson(json, "us", samples, ratios);
    return 0;
}

#include "Latency.moc"
