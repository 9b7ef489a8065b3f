#include "ozdevice/Output.hpp"
#include "ozdevice/PlayedScenario.hpp"
#include "ozdevice/PrivatePhone.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include <QCoreApplication>
#include <QProcess>
#include <QTimer>

#include <csignal>

namespace oz::tools {

namespace {

constexpr int NotStarted = 127; // as shells have it
constexpr std::chrono::seconds EndDeadline{5};

struct RunOptions
{
    std::string phone;
    ScenarioOptions scenario;
    bool untilPlayed = false;
    bool panel = false;
    std::vector<std::string> words;
};

int run(const RunOptions &options)
{
    QStringList words = toStringList(options.words);
    if (words.isEmpty())
        throw CommandError(
            WrongUse, QStringLiteral("run wants a command: ozdevice run -- COMMAND [ARGUMENT...]"));
    QProcess command;
    const TerminationSignals signals([&](int signal) {
        // Ctrl-C reaches the command by itself; the rest is passed on, also to one that has begun before this
        // program heard of it.
        if (signal != SIGINT && command.processId() > 0)
            ::kill(pid_t(command.processId()), signal);
    });
    EventLoop loop;
    const auto scenario = options.scenario.scenario.empty()
        ? nullptr
        : std::make_unique<PlayedScenario>(options.scenario, loop);
    const QString ownPhone = QString::fromStdString(options.phone);
    const PrivatePhone phone(ownPhone.isEmpty() && scenario
            ? scenarioFile(QString::fromStdString(options.scenario.scenario))
            : ownPhone);
    if (scenario)
        (void)scenario->check();
    command.setProcessChannelMode(QProcess::ForwardedChannels);
    command.setInputChannelMode(QProcess::ForwardedInputChannel);
    command.setChildProcessModifier([&] { signals.unblock(); });
    const QString program = words.takeFirst();
    bool isEnded = false; // by this program
    const auto endCommand = [&] {
        isEnded = command.state() != QProcess::NotRunning;
        command.terminate();
        QTimer::singleShot(EndDeadline, &command, &QProcess::kill);
    };
    QObject::connect(&command, &QProcess::finished, qApp, [&] {
        // What it still expects of the command will not come.
        if (scenario && scenario->isPlaying())
            loop.guard([&] { scenario->stop(); });
        else
            QCoreApplication::quit();
    });
    QObject::connect(&command, &QProcess::errorOccurred, qApp, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            QCoreApplication::exit(NotStarted);
    });
    if (scenario) {
        QObject::connect(scenario.get(), &PlayedScenario::finished, qApp, [&] {
            if (command.state() == QProcess::NotRunning)
                QCoreApplication::quit();
            else if (options.untilPlayed || !scenario->hasPassed())
                endCommand();
        });
        QObject::connect(&command, &QProcess::started, qApp, [&] { loop.guard([&] { scenario->play(); }); });
    }
    QProcess panel;
    if (options.panel) {
        panel.setProcessChannelMode(QProcess::ForwardedChannels);
        panel.setChildProcessModifier([&] { signals.unblock(); });
        panel.start(QCoreApplication::applicationDirPath() + QLatin1String("/ozdevice-panel"), {});
        if (!panel.waitForStarted())
            complain(QLatin1String("the panel: ") + panel.errorString());
    }
    command.start(program, words);
    int status = 0;
    try {
        status = loop.run();
    } catch (const CommandError &) {
        command.kill();
        command.waitForFinished();
        throw;
    }
    if (panel.state() != QProcess::NotRunning) {
        panel.terminate();
        panel.waitForFinished();
    }
    if (status == NotStarted) {
        complain(program + QLatin1String(": ") + command.errorString());
        return NotStarted;
    }
    if (!isEnded && command.exitStatus() == QProcess::CrashExit)
        return 128 + command.exitCode();
    if (!isEnded && command.exitCode() != 0)
        return command.exitCode();
    if (!scenario || scenario->hasPassed())
        return Success;
    // It ended by itself, and may do so before a scenario that expects nothing of it.
    if (!isEnded && !scenario->hasExpectations() && scenario->wasStopped())
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
    verb.option("--scenario", options->scenario.scenario,
        "Play a scenario meanwhile: a file, or the name of an installed one");
    options->scenario.addTo(verb);
    verb.flag("--until-played", options->untilPlayed, "End the command when the scenario is over");
    verb.flag("--panel", options->panel, "Show the control panel meanwhile");
    verb.option("COMMAND", options->words, "The command and its arguments, after --");
    verb.footer(
        "The phone starts before the command and ends after it; its device root is the command's\n"
        "OZ_DEVICE_ROOT. The exit status is the command's, 127 where it cannot be started. A scenario has "
        "its\n"
        "own phone, unless --phone names one. Where one of its steps fails, the command is ended, and the\n"
        "status is 1.");
}

} // namespace oz::tools
