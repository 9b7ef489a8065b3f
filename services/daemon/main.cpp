// The services daemon: publishes the device's tree and serves its control objects.

#include "Arguments.hpp"
#include "ProgramOutput.hpp"
#include "ScenarioNames.hpp"
#include "SignalWatch.hpp"
#include "daemon/Daemon.hpp"
#include "linux/Worker.hpp"
#include "publishing/Log.hpp"
#include "source/Error.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PrintableText.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <utility>

using namespace oz::services;

namespace {

constexpr std::chrono::seconds LongestEnd{1};

struct Options
{
    std::string config;
    std::string phone;
    std::string scenario;
    std::string speed;
    std::vector<std::string> sources;
    std::string displays;
    std::string trustedGroup;
    bool simulated = false;
    bool fresh = false;
    bool listSources = false;
    int owner = 0; // the process that the daemon is private to; 0 for none
};

// A descriptor that has input once the process has ended; throws where it has ended already.
int watchProcess(int process)
{
    const int descriptor = int(::syscall(SYS_pidfd_open, process, 0));
    if (descriptor < 0) {
        const int error = errno;
        QDir().rmdir(oz::devicePath(QStringLiteral("/handled")));
        QDir().rmdir(oz::deviceRoot()); // which that process made
        throw Error(QLatin1String("--private: cannot watch the process ") + QString::number(process)
            + QLatin1String(": ") + qt_error_string(error));
    }
    return descriptor;
}

// A tree with many clients needs more descriptors than a shell allows by default.
void raiseDescriptorLimit()
{
    constexpr rlim_t wanted = 65'536;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) < 0 || limit.rlim_cur >= wanted)
        return;
    limit.rlim_cur = std::min(wanted, limit.rlim_max);
    (void)::setrlimit(RLIMIT_NOFILE, &limit);
}

// Tells the service manager as often as it wants to hear it that the event loop turns.
void feedWatchdog()
{
    uint64_t microseconds = 0;
    if (sd_watchdog_enabled(0, &microseconds) <= 0)
        return;
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, [] { sd_notify(0, "WATCHDOG=1"); });
    timer->start(std::chrono::milliseconds(microseconds / 2000));
}

// The daemon's own prefix, wherever it was installed to.
QString inPrefix(const QString &path)
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1String("/../") + path);
}

// In /etc for a daemon of the system, else in the prefix's own.
QString installedConfiguration()
{
    const QString prefix = inPrefix({});
    return (prefix == u"/usr" ? QString() : prefix) + QLatin1String("/etc/ozdevice/ozdeviced.conf");
}

// The scenario's file.
QString scenarioOf(const Options &options)
{
    const QString word = QString::fromStdString(options.scenario);
    if (const auto file = oz::arguments::scenarioFile(word))
        return *file;
    throw Error(QLatin1String("there is no file and no installed scenario '") + word
        + QLatin1String("'; installed are ") + oz::arguments::installedScenarios().join(QLatin1String(", ")));
}

Configuration readConfiguration(const Options &options)
{
    Configuration config;
    if (!options.config.empty())
        config = Configuration::parseFile(QString::fromStdString(options.config));
    else if (QFileInfo::exists(installedConfiguration()))
        config = Configuration::parseFile(installedConfiguration());
    try {
        if (options.simulated)
            config.simulateAll();
        for (const std::string &line : options.sources) {
            const QString text = QString::fromStdString(line);
            config.choose(text.section(u'=', 0, 0), text.section(u'=', 1));
        }
        if (!options.displays.empty())
            config.choose(QStringLiteral("display"), QString::fromStdString(options.displays));
        if (!options.trustedGroup.empty())
            config.setTrustedGroup(QString::fromStdString(options.trustedGroup));
    } catch (const Error &error) {
        throw oz::arguments::WrongWords(error.what());
    }
    if (!options.phone.empty())
        config.phoneFile = QString::fromStdString(options.phone);
    else if (!options.scenario.empty())
        config.phoneFile = scenarioOf(options);
    if (config.phoneFile.isEmpty())
        config.phoneFile = inPrefix(QStringLiteral("share/ozdevice/phone.json"));
    return config;
}

void listSources()
{
    for (const Facility &facility : facilities()) {
        std::printf("%s:\n", qUtf8Printable(facility.name));
        for (const SourceKind &kind : facility.sources) {
            QString options;
            for (const QString &option : kind.options)
                options += QLatin1String(" [") + option + QLatin1String("=...]");
            std::printf("  %s%s  %s\n", qUtf8Printable(kind.name), qUtf8Printable(options),
                qUtf8Printable(kind.help));
        }
    }
    std::printf("Each facility can be fed by 'auto' (the source of this system that is there, or none) and "
                "by 'none' too.\n");
}

// Takes away what the daemon made under its root, and the root where nothing else is in it.
void removeTree()
{
    for (const char *folder : {"/pps", "/handled"})
        QDir(oz::devicePath(QLatin1String(folder))).removeRecursively();
    for (const char *directory : {"/dev/power", "/dev"})
        QDir().rmdir(oz::devicePath(QLatin1String(directory)));
    QDir().rmdir(oz::deviceRoot());
}

// Reads the configuration anew when it is asked to, but not more often than once a second: sources that are
// found in threads of their own would pile up.
class Reload
{
public:
    Reload(Daemon &daemon, const Options &options) : m_daemon(daemon), m_options(options)
    {
        m_pause.setSingleShot(true);
        m_pause.setInterval(std::chrono::seconds(1));
        m_pause.callOnTimeout([this] {
            if (std::exchange(m_isWanted, false))
                request();
        });
    }
    void request()
    {
        if (m_pause.isActive()) {
            m_isWanted = true;
            return;
        }
        m_pause.start();
        sd_notify(0, "RELOADING=1");
        try {
            m_daemon.reload(readConfiguration(m_options));
            qCInfo(logServices) << "the configuration and the phone's file are read anew";
        } catch (const Error &error) {
            qCWarning(logServices).noquote()
                << error.text() + QLatin1String("; everything goes on as it was");
        }
        sd_notify(0, "READY=1");
    }

private:
    Daemon &m_daemon;
    const Options &m_options;
    QTimer m_pause;
    bool m_isWanted = false;
};

// Plays the scenario that was asked for, and logs what becomes of it.
void playScenario(Daemon &daemon, const Options &options)
{
    QVariantMap order{{QStringLiteral("file"), scenarioOf(options)}};
    if (!options.speed.empty())
        order.insert(QStringLiteral("speed"), QString::fromStdString(options.speed));
    QObject::connect(&daemon.scenarios(), &ScenarioService::logged, qApp, [](const ScenarioEntry &entry) {
        qCInfo(logServices).noquote()
            << entry.place + QLatin1String(": ") + entry.text + QLatin1String(": ") + entry.outcome;
    });
    QObject::connect(&daemon.scenarios(), &ScenarioService::finished, qApp,
        [](ScenarioPlayer::State state, const QString &problem) {
            if (state == ScenarioPlayer::Passed)
                qCInfo(logServices) << "the scenario has been played";
            else
                qCWarning(logServices).noquote() << "the scenario ended:" << problem;
        });
    (void)daemon.scenarios().play(order);
}

int serve(const Options &options)
{
    std::optional<QSocketNotifier> owner;
    if (options.owner) {
        owner.emplace(watchProcess(options.owner), QSocketNotifier::Read);
        QObject::connect(&*owner, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    }
    // Before the daemon can be reached, and before it has threads, which a signal would end the program by.
    Reload *reloading = nullptr;
    const oz::arguments::SignalWatch signalWatch({SIGTERM, SIGINT, SIGHUP}, [&reloading](int signal) {
        if (signal == SIGHUP)
            reloading->request();
        else
            QCoreApplication::quit();
    });
    Daemon daemon(
        readConfiguration(options), {}, options.fresh ? Daemon::Start::Fresh : Daemon::Start::Continue);
    Reload reload(daemon, options);
    reloading = &reload;
    feedWatchdog();
    const auto announce = [&options] {
        sd_notify(0, "READY=1");
        if (!options.owner)
            qCInfo(logServices).noquote() << "serving" << oz::devicePath(QStringLiteral("/pps"));
    };
    if (daemon.isReady())
        announce();
    else
        QObject::connect(&daemon, &Daemon::ready, announce);
    if (!options.scenario.empty())
        playScenario(daemon, options);
    const int status = QCoreApplication::exec();
    sd_notify(0, "STOPPING=1");
    return status;
}

void describe(const oz::arguments::Verb &program, Options &options)
{
    program.footer(
        "The tree lies under the device root: OZ_DEVICE_ROOT where set, else / where /pps exists, else\n"
        "$XDG_RUNTIME_DIR/ozdevice. SIGTERM and SIGINT stop the daemon; published state stays.\n"
        "SIGHUP reads the configuration and the phone's file anew.\n\n"
        "Exit status: 0 stopped by a signal, 1 cannot start (the reason is on standard error), 2 wrong use.");
    program
        .option("--config", options.config,
            "Which source feeds which facility (default: etc/ozdevice/ozdeviced.conf of the prefix, /etc/... "
            "for /usr; without that file, 'auto' for all)")
        .valueName("FILE");
    program.option("--phone", options.phone, "The simulated phone's file, or a scenario that has one")
        .valueName("FILE");
    const auto scenario =
        program
            .option("--scenario", options.scenario,
                "Play a scenario on the simulated phone: a file, or the name of an installed one")
            .valueName("SCENARIO");
    program
        .option("--speed", options.speed,
            "The phone's time to the real one while it plays: a number, or max for without waiting (as 0)")
        .needs(scenario);
    program
        .option("--source", options.sources,
            "Feed a facility by a source, or by 'auto' or 'none', over what the configuration says")
        .valueName("FACILITY=SOURCE");
    program.flag("--simulated", options.simulated,
        "Feed every facility by the simulated phone, whatever the configuration says");
    program.flag("--fresh", options.fresh, "Begin anew, not where a daemon that died was");
    program
        .option("--trusted-group", options.trustedGroup,
            "Let only members of this group ask for what acts for everybody: sessions, connections, shutting "
            "down")
        .valueName("GROUP");
    program
        .option("--displays", options.displays,
            "Feed the displays by a source: simulated, or xrandr for those of the X server that DISPLAY "
            "names")
        .valueName("SOURCE");
    program.flag("--list-sources", options.listSources, "List the facilities and their sources, and exit");
    program
        .count("--private", options.owner,
            "Stop when this process ends, and remove the tree under OZ_DEVICE_ROOT then")
        .valueName("PROCESS");
}

int runDaemon(int argc, char **argv)
{
    Options options;
    const oz::arguments::Parser parser(
        "Publishes the device's publish/subscribe tree and serves its control objects.", "ozdeviced",
        OZ_VERSION);
    describe(parser.program(), options);
    try {
        if (!parser.parse(argc, argv))
            return 0;
    } catch (const oz::arguments::WrongWords &error) {
        return oz::arguments::reportWrongUse(QString::fromUtf8(error.what()));
    }
    if (options.listSources) {
        listSources();
        return 0;
    }
    if (options.owner && qEnvironmentVariableIsEmpty("OZ_DEVICE_ROOT")) {
        std::fprintf(stderr, "ozdeviced: --private needs a device root of its own in OZ_DEVICE_ROOT\n");
        return 2;
    }
    if (options.owner) // who may ask how far applications are
        QDir().mkpath(oz::devicePath(QStringLiteral("/handled")));
    ::umask(022); // nobody else writes into the tree's folders, and everybody can read them
    // Its threads are short-lived and wait most of the time. With an arena for each, the heap would grow by
    // fragments with every reload of the configuration.
    ::mallopt(M_ARENA_MAX, 1);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(OZ_VERSION));
    oz::arguments::logPrintably();
    raiseDescriptorLimit();
    try {
        const int status = serve(options);
        if (options.owner)
            removeTree();
        return status;
    } catch (const oz::arguments::WrongWords &error) {
        return oz::arguments::reportWrongUse(QString::fromUtf8(error.what()));
    } catch (const Error &error) {
        std::fprintf(stderr, "ozdeviced: %s\n", qUtf8Printable(oz::printableText(error.text())));
        return 1;
    }
}

} // namespace

int main(int argc, char **argv)
{
    const int status = runDaemon(argc, argv);
    // One that hangs, in a call of a service, is left behind without the program's last words.
    if (!Workers::waitForAll(LongestEnd)) {
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}
