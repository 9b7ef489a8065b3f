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
        m_process.start(QCoreApplication::applicationDirPath() + "/ozdevice-panel"_L1, {});
        if (!m_process.waitForStarted())
            printError("the panel: "_L1 + m_process.errorString());
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

// Lets QML applications import the module that is installed, or built, beside this program.
void offerModules()
{
    const char *const variable = "QML_IMPORT_PATH";
    const QDir here(QCoreApplication::applicationDirPath());
    for (const char *folder : {OZ_MODULES_FROM_PROGRAM, "../qml"}) {
        const QString modules = QDir::cleanPath(here.filePath(QLatin1String(folder)));
        if (!QFileInfo::exists(modules + "/oz/device/qmldir"_L1))
            continue;
        QStringList paths = qEnvironmentVariable(variable).split(QDir::listSeparator(), Qt::SkipEmptyParts);
        if (!paths.contains(modules))
            paths.append(modules);
        qputenv(variable, QFile::encodeName(paths.join(QDir::listSeparator())));
        return;
    }
}

// A command on a phone of its own, with its scenario and panel.
class Run
{
public:
    explicit Run(const RunOptions &options);

    [[nodiscard]] int run();

private:
    void followScenario();
    void showPanel();
    void onCommandFinished();
    void onScenarioFinished();
    [[nodiscard]] int status() const;

    const RunOptions &m_options;
    TerminationSignals m_signals;
    EventLoop m_loop;
    std::unique_ptr<PlayedScenario> m_scenario; // null without one
    std::unique_ptr<client::PrivateDaemon> m_phone;
    std::optional<Panel> m_panel;
    std::optional<RunningCommand> m_command; // ends before the phone does
};

Run::Run(const RunOptions &options)
    : m_options(options), m_signals([this](int signal) {
          // Ctrl-C reaches the command by itself.
          if (signal != SIGINT && m_command)
              m_command->sendSignal(signal);
      })
{
    if (!options.scenario.scenario.empty())
        m_scenario = std::make_unique<PlayedScenario>(options.scenario, m_loop);
    const QString phone = QString::fromStdString(options.phone);
    m_phone = startPhone(phone.isEmpty() && m_scenario
            ? scenarioFile(QString::fromStdString(options.scenario.scenario))
            : phone);
    if (m_scenario)
        (void)m_scenario->check();
    offerModules();
    m_command.emplace(toStringList(options.words), m_signals);
    QObject::connect(&*m_command, &RunningCommand::finished, qApp, [this] { onCommandFinished(); });
}

int Run::run()
{
    const bool waits = m_scenario && m_options.scenario.waits();
    if (!waits)
        showPanel();
    if (m_scenario)
        followScenario();
    m_command->start();
    (void)m_loop.run();
    return status();
}

void Run::followScenario()
{
    QObject::connect(m_scenario.get(), &PlayedScenario::finished, qApp, [this] { onScenarioFinished(); });
    if (m_options.scenario.waits()) {
        // The panel opens objects too, so it comes after the application.
        QObject::connect(m_scenario.get(), &PlayedScenario::begun, qApp, [this] { showPanel(); });
        m_scenario->play();
    } else {
        QObject::connect(&*m_command, &RunningCommand::started, qApp,
            [this] { m_loop.guard([this] { m_scenario->play(); }); });
    }
}

void Run::showPanel()
{
    if (m_options.panel && !m_panel)
        m_command->exclude(m_panel.emplace(m_signals).process());
}

void Run::onCommandFinished()
{
    // A scenario that still expects something of the command would wait in vain.
    if (m_scenario && m_scenario->isPlaying())
        m_loop.guard([this] { m_scenario->stop(); });
    else
        QCoreApplication::quit();
}

void Run::onScenarioFinished()
{
    if (!m_command->isRunning())
        QCoreApplication::quit();
    else if (m_options.untilPlayed || !m_scenario->hasPassed())
        m_command->end();
}

int Run::status() const
{
    if (!m_command->problem().isEmpty())
        printError(m_command->problem());
    const bool neverBegan = m_scenario && m_scenario->wasStopped() && !m_scenario->hasBegun();
    if (neverBegan && m_command->problem().isEmpty())
        printError(m_scenario->problem());
    if (!m_command->wasEnded() && m_command->status() != Success)
        return m_command->status();
    if (!m_scenario || m_scenario->hasPassed())
        return Success;
    // A report, or a run until the scenario is over, must not look as if the scenario had been played.
    const bool hasToPlay =
        m_scenario->hasExpectations() || m_options.untilPlayed || !m_options.scenario.junit.empty();
    if (neverBegan && hasToPlay)
        return Failed;
    // A command may end by itself before a scenario that expects nothing of it.
    if (!m_command->wasEnded() && !m_scenario->hasExpectations() && m_scenario->wasStopped())
        return Success;
    throw CommandError(Failed,
        m_scenario->wasStopped()
            ? u"the command ended before the scenario, which still expects something of it"_s
            : m_scenario->problem());
}

int run(const RunOptions &options)
{
    if (options.words.empty()) {
        throw CommandError(WrongUse, u"run needs a command: ozdevice run -- COMMAND [ARGUMENT...]"_s);
    }
    return Run(options).run();
}

} // namespace

void addRunVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<RunOptions>(parser, action)
                                     .add("run", "Run a command against a simulated phone of its own", run);
    verb.option("--phone", options->phone, "The phone's file (default: the installed phone.json)");
    const auto scenario = verb.option("--scenario", options->scenario.scenario,
        "Play this scenario meanwhile: a file, or the name of an installed one");
    for (const auto &option : options->scenario.addTo(verb))
        (void)option.needs(scenario);
    options->scenario.waitFor = "open";
    (void)verb
        .option("--wait-for", options->scenario.waitFor,
            "Begin the scenario when the command opens its first object, sends its first request, or "
            "at once")
        .oneOf({"open", "request", "none"})
        .needs(scenario);
    (void)verb
        .duration(
            "--wait-limit", options->scenario.waitLimit, "Begin the scenario after this time in any case")
        .defaultText("10s")
        .needs(scenario);
    (void)verb.flag("--until-played", options->untilPlayed, "End the command when the scenario is over")
        .needs(scenario);
    verb.flag("--panel", options->panel, "Show the control panel meanwhile");
    verb.option("COMMAND", options->words, "The command and its arguments, after --");
    verb.footer(
        "The phone starts before the command and ends after it; its device root is the command's\n"
        "OZ_DEVICE_ROOT. The exit status is the command's, or 127 if it cannot be started. A scenario has "
        "its\n"
        "own phone, unless --phone names one. If one of its steps fails, the command is ended, and the\n"
        "status is 1. Processes that the command has started end with it: SIGTERM, and after a second "
        "SIGKILL.");
}

} // namespace oz::tools
