#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PlayedScenario.hpp"
#include "ozdevice/RunningCommand.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <csignal>
#include <optional>

namespace oz::tools {

namespace {

struct RunOptions
{
    std::string phone;
    ScenarioOptions scenario;
    bool untilPlayed = false;
    bool panel = false;
    std::vector<std::string> words;
};

// The control panel beside the command.
class Panel
{
public:
    explicit Panel(const TerminationSignals &signals)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.setChildProcessModifier([&signals] { signals.unblock(); });
        m_process.start(QCoreApplication::applicationDirPath() + QLatin1String("/ozdevice-panel"), {});
        if (!m_process.waitForStarted())
            printError(QLatin1String("the panel: ") + m_process.errorString());
    }
    ~Panel()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        m_process.waitForFinished();
    }
    Panel(const Panel &) = delete;
    Panel &operator=(const Panel &) = delete;

    [[nodiscard]] qint64 process() const { return m_process.processId(); }

private:
    QProcess m_process;
};

// Lets an application in QML import what is installed, or built, beside this program.
void offerModules()
{
    const char *const variable = "QML_IMPORT_PATH";
    const QDir here(QCoreApplication::applicationDirPath());
    for (const char *folder : {OZ_MODULES_FROM_PROGRAM, "../qml"}) {
        const QString modules = QDir::cleanPath(here.filePath(QLatin1String(folder)));
        if (!QFileInfo::exists(modules + QLatin1String("/oz/device/qmldir")))
            continue;
        QStringList paths = qEnvironmentVariable(variable).split(QDir::listSeparator(), Qt::SkipEmptyParts);
        if (!paths.contains(modules))
            paths.append(modules);
        qputenv(variable, QFile::encodeName(paths.join(QDir::listSeparator())));
        return;
    }
}

int run(const RunOptions &options)
{
    const QStringList words = toStringList(options.words);
    if (words.isEmpty())
        throw CommandError(
            WrongUse, QStringLiteral("run wants a command: ozdevice run -- COMMAND [ARGUMENT...]"));
    RunningCommand *running = nullptr;
    const TerminationSignals signals([&](int signal) {
        // Also to one that has begun before this program heard of it.
        if (signal != SIGINT && running)
            running->pass(signal);
    });
    EventLoop loop;
    const auto scenario = options.scenario.scenario.empty()
        ? nullptr
        : std::make_unique<PlayedScenario>(options.scenario, loop);
    const QString ownPhone = QString::fromStdString(options.phone);
    const auto phone = startPhone(ownPhone.isEmpty() && scenario
            ? scenarioFile(QString::fromStdString(options.scenario.scenario))
            : ownPhone);
    if (scenario)
        (void)scenario->check();
    offerModules();
    std::optional<Panel> panel;
    // It ends before the phone does.
    RunningCommand command(words, signals);
    running = &command;
    const auto showPanel = [&] {
        if (options.panel && !panel)
            command.leaveAlone(panel.emplace(signals).process());
    };
    const bool waits = scenario && options.scenario.waits();
    if (!waits)
        showPanel();
    QObject::connect(&command, &RunningCommand::finished, qApp, [&] {
        // What it still expects of the command will not come.
        if (scenario && scenario->isPlaying())
            loop.guard([&] { scenario->stop(); });
        else
            QCoreApplication::quit();
    });
    if (scenario) {
        QObject::connect(scenario.get(), &PlayedScenario::finished, qApp, [&] {
            if (!command.isRunning())
                QCoreApplication::quit();
            else if (options.untilPlayed || !scenario->hasPassed())
                command.end();
        });
        if (waits) {
            // The panel opens objects too, so it comes after the application.
            QObject::connect(scenario.get(), &PlayedScenario::begun, qApp, showPanel);
            scenario->play();
        } else {
            QObject::connect(
                &command, &RunningCommand::started, qApp, [&] { loop.guard([&] { scenario->play(); }); });
        }
    }
    command.start();
    (void)loop.run();
    if (!command.problem().isEmpty())
        printError(command.problem());
    const bool neverBegan = scenario && scenario->wasStopped() && !scenario->hasBegun();
    if (neverBegan && command.problem().isEmpty())
        printError(scenario->problem());
    if (!command.wasEnded() && command.status() != Success)
        return command.status();
    if (!scenario || scenario->hasPassed())
        return Success;
    // A report, or a run until the scenario is over, must not look as if it had been played.
    if (neverBegan && (scenario->hasExpectations() || options.untilPlayed || !options.scenario.junit.empty()))
        return Failed;
    // It ended by itself, and may do so before a scenario that expects nothing of it.
    if (!command.wasEnded() && !scenario->hasExpectations() && scenario->wasStopped())
        return Success;
    throw CommandError(Failed,
        scenario->wasStopped()
            ? QStringLiteral("the command ended before the scenario, which still expects something of it")
            : scenario->problem());
}

} // namespace

void addRunVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<RunOptions>(parser, action)
                                     .add("run", "Run a command against a simulated phone of its own", run);
    verb.option("--phone", options->phone, "The phone's file (default: the installed phone.json)");
    const auto scenario = verb.option("--scenario", options->scenario.scenario,
        "Play a scenario meanwhile: a file, or the name of an installed one");
    for (const auto &option : options->scenario.addTo(verb))
        (void)option.needs(scenario);
    options->scenario.waitFor = "open";
    (void)verb
        .option("--wait-for", options->scenario.waitFor,
            "Begin the scenario when the command has opened its first object, has sent its first request, or "
            "at once")
        .oneOf({"open", "request", "none"})
        .needs(scenario);
    (void)verb.duration("--wait-limit", options->scenario.waitLimit, "Begin it after this time in any case")
        .defaultText("10s")
        .needs(scenario);
    (void)verb.flag("--until-played", options->untilPlayed, "End the command when the scenario is over")
        .needs(scenario);
    verb.flag("--panel", options->panel, "Show the control panel meanwhile");
    verb.option("COMMAND", options->words, "The command and its arguments, after --");
    verb.footer(
        "The phone starts before the command and ends after it; its device root is the command's\n"
        "OZ_DEVICE_ROOT. The exit status is the command's, 127 where it cannot be started. A scenario has "
        "its\n"
        "own phone, unless --phone names one. Where one of its steps fails, the command is ended, and the\n"
        "status is 1. What the command has started ends with it: SIGTERM, and after a second SIGKILL.");
}

} // namespace oz::tools
