// The services daemon: publishes the device's tree and serves its control objects.

#include "core/Daemon.hpp"
#include "core/Error.hpp"
#include "core/Facilities.hpp"
#include "core/Log.hpp"

#include <oz/DeviceRoot.hpp>

#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

using namespace oz::services;

namespace {

struct Options
{
    std::string config;
    std::string phone;
    std::vector<std::string> sources;
    std::string displays;
    bool listSources = false;
    bool isPrivate = false;
};

// SIGTERM and SIGINT end the event loop, and with it everything in order.
void quitOnSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const int descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    auto *notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
}

SourceConfig readConfig(const Options &options)
{
    SourceConfig config;
    if (!options.config.empty())
        config = SourceConfig::parseFile(QString::fromStdString(options.config));
    else if (QFileInfo::exists(QStringLiteral(OZ_CONFIG_FILE)))
        config = SourceConfig::parseFile(QStringLiteral(OZ_CONFIG_FILE));
    for (const std::string &line : options.sources) {
        const QString text = QString::fromStdString(line);
        config.setSource(text.section(u'=', 0, 0), text.section(u'=', 1));
    }
    if (!options.displays.empty())
        config.setSource(QStringLiteral("display"), QString::fromStdString(options.displays));
    if (!options.phone.empty())
        config.phoneFile = QString::fromStdString(options.phone);
    if (config.phoneFile.isEmpty()) {
        config.phoneFile = QDir::cleanPath(
            QCoreApplication::applicationDirPath() + QLatin1String("/../share/ozdevice/phone.json"));
    }
    return config;
}

void listSources()
{
    for (const Facility &facility : facilities()) {
        std::printf("%s: %s\n", qUtf8Printable(facility.name),
            qUtf8Printable(QStringList(facility.sources.keys()).join(QLatin1String(", "))));
    }
}

// Takes away what the daemon made under its root, and the root where nothing else is in it.
void removeTree()
{
    QDir(oz::devicePath(QStringLiteral("/pps"))).removeRecursively();
    for (const char *directory : {"/dev/power", "/dev"})
        QDir().rmdir(oz::devicePath(QLatin1String(directory)));
    QDir().rmdir(oz::deviceRoot());
}

int serve(const Options &options)
{
    const SourceConfig config = readConfig(options);
    const Daemon daemon(config, JsonNode::parseFile(config.phoneFile));
    sd_notify(0, "READY=1");
    if (!options.isPrivate)
        qCInfo(logServices).noquote() << "serving" << oz::devicePath(QStringLiteral("/pps"));
    const int status = QCoreApplication::exec();
    sd_notify(0, "STOPPING=1");
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    CLI::App parser(
        "Publishes the device's publish/subscribe tree and serves its control objects.", "ozdeviced");
    parser.footer(
        "The tree lies under the device root: OZ_DEVICE_ROOT where set, else / where /pps exists, else\n"
        "$XDG_RUNTIME_DIR/ozdevice. SIGTERM and SIGINT stop the daemon; published state stays.\n\n"
        "Exit status: 0 stopped by a signal, 1 cannot start (the reason is on standard error), 2 wrong use.");
    parser.set_version_flag("--version", OZ_VERSION);
    parser
        .add_option(
            "--config", options.config, "Which source feeds which facility (default " OZ_CONFIG_FILE ")")
        ->type_name("FILE");
    parser.add_option("--phone", options.phone, "The simulated phone's file")->type_name("FILE");
    parser
        .add_option(
            "--source", options.sources, "Feed a facility by a source, over what the configuration says")
        ->type_name("FACILITY=SOURCE");
    parser
        .add_option("--displays", options.displays,
            "Feed the displays by a source: simulated, or xrandr for those of the X server that DISPLAY "
            "names")
        ->type_name("SOURCE");
    parser.add_flag("--list-sources", options.listSources, "List the facilities and their sources, and exit");
    parser.add_flag("--private", options.isPrivate,
        "Stop with the process that started it, and remove the tree under OZ_DEVICE_ROOT then");
    try {
        parser.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return parser.exit(error) ? 2 : 0;
    }
    if (options.listSources) {
        listSources();
        return 0;
    }
    if (options.isPrivate && qEnvironmentVariableIsEmpty("OZ_DEVICE_ROOT")) {
        std::fprintf(stderr, "ozdeviced: --private needs a device root of its own in OZ_DEVICE_ROOT\n");
        return 2;
    }
    if (options.isPrivate)
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const QCoreApplication application(argc, argv);
    quitOnSignals();
    try {
        const int status = serve(options);
        if (options.isPrivate)
            removeTree();
        return status;
    } catch (const Error &error) {
        std::fprintf(stderr, "ozdeviced: %s\n", error.what());
        return 1;
    }
}
