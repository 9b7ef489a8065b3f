#include "ozdevice/Output.hpp"
#include "ozdevice/PrivatePhone.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

namespace oz::tools {

namespace {

struct Options
{
    std::string phone;
    bool panel = false;
    std::vector<std::string> words;
};

int run(const Options &options)
{
    QStringList words = toStringList(options.words);
    if (words.isEmpty())
        throw CommandError(
            WrongUse, QStringLiteral("run wants a command: ozdevice run -- COMMAND [ARGUMENT...]"));
    QProcess command;
    const TerminationSignals signals([&](int signal) {
        // Ctrl-C reaches the command by itself; the rest is passed on.
        if (signal != SIGINT && command.state() == QProcess::Running)
            ::kill(pid_t(command.processId()), signal);
    });
    const PrivatePhone phone(QString::fromStdString(options.phone));
    command.setProcessChannelMode(QProcess::ForwardedChannels);
    command.setInputChannelMode(QProcess::ForwardedInputChannel);
    command.setChildProcessModifier([&] { signals.unblock(); });
    QObject::connect(&command, &QProcess::finished, qApp, &QCoreApplication::quit);
    QObject::connect(&command, &QProcess::errorOccurred, qApp, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            QCoreApplication::exit(127);
    });
    QProcess panel;
    if (options.panel) {
        panel.setProcessChannelMode(QProcess::ForwardedChannels);
        panel.setChildProcessModifier([&] { signals.unblock(); });
        panel.start(QCoreApplication::applicationDirPath() + QLatin1String("/ozdevice-panel"), {});
        if (!panel.waitForStarted())
            complain(QLatin1String("the panel: ") + panel.errorString());
    }
    const QString program = words.takeFirst();
    command.start(program, words);
    const int status = QCoreApplication::exec();
    panel.terminate();
    panel.waitForFinished();
    if (status == 127) {
        complain(program + QLatin1String(": ") + command.errorString());
        return 127;
    }
    return command.exitStatus() == QProcess::CrashExit ? 128 + command.exitCode() : command.exitCode();
}

} // namespace

void addRunVerb(CLI::App &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<Options>(parser, action).add("run", "Run a command against a simulated phone of its own", run);
    verb->add_option("--phone", options->phone, "The phone's file (default: the installed phone.json)");
    verb->add_flag("--panel", options->panel, "Show the control panel meanwhile");
    verb->add_option("COMMAND", options->words, "The command and its arguments, after --");
    verb->footer("The phone starts before the command and ends after it; its device root is the command's\n"
                 "OZ_DEVICE_ROOT. The exit status is the command's, 127 where it cannot be started.");
}

} // namespace oz::tools
