// run, demo, sim and wait-ready: everything about the phone that there is not.

#include "meta/MetaText.hpp"
#include "ozdevice/Command.hpp"
#include "ozdevice/PrivatePhone.hpp"
#include "ozdevice/Signals.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/device/SdCardInfo.hpp>

#include <QCoreApplication>
#include <QProcess>
#include <QTimer>
#include <QVariantMap>

#include <csignal>

namespace oz::tools {

namespace {

struct Options
{
    std::string phone;
    std::vector<std::string> words;
    std::string timeout = "10s";
    std::string pace = "1s";
};

QStringList wordsOf(const Options &options)
{
    QStringList words;
    for (const std::string &word : options.words)
        words.append(QString::fromStdString(word));
    return words;
}

int run(const Options &options)
{
    QStringList words = wordsOf(options);
    if (words.isEmpty())
        throw CommandError(
            WrongUse, QStringLiteral("run wants a command: ozdevice run -- COMMAND [ARGUMENT...]"));
    QProcess command;
    const Signals signals([&](int signal) {
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
    const QString program = words.takeFirst();
    command.start(program, words);
    const int status = QCoreApplication::exec();
    if (status == 127) {
        std::fprintf(
            stderr, "ozdevice: %s: %s\n", qUtf8Printable(program), qUtf8Printable(command.errorString()));
        return 127;
    }
    return command.exitStatus() == QProcess::CrashExit ? 128 + command.exitCode() : command.exitCode();
}

int sim(const Options &options)
{
    QStringList words = wordsOf(options);
    if (words.size() == 1)
        throw CommandError(WrongUse,
            QLatin1String("sim ") + words[0] + QLatin1String(" wants a verb; `ozdevice sim` lists them"));
    if (!words.isEmpty()) {
        const QString facility = words.takeFirst();
        const QString verb = words.takeFirst();
        (void)askDaemon(QStringLiteral("sim"),
            QVariantMap{{QStringLiteral("facility"), facility}, {QStringLiteral("verb"), verb},
                {QStringLiteral("arguments"), words}});
        return Success;
    }
    const QVariantMap parts =
        askDaemon(QStringLiteral("describe")).toMap().value(QStringLiteral("simulated")).toMap();
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const QVariantMap described = part->toMap();
        QStringList begin{part.key()};
        if (described.contains(QStringLiteral("instances"))) {
            begin.append(QStringLiteral("NAME"));
            printLine(painted(Paint::Bold, begin.join(u' ').leftJustified(40)) + QLatin1String(" NAME is ")
                + described.value(QStringLiteral("instances")).toStringList().join(u'|'));
        }
        for (const QVariant &verb : described.value(QStringLiteral("verbs")).toList()) {
            const QVariantMap entry = verb.toMap();
            const QStringList usage = begin + QStringList{entry.value(QStringLiteral("name")).toString()}
                + entry.value(QStringLiteral("arguments")).toStringList();
            printLine(painted(Paint::Bold, usage.join(u' ').leftJustified(40)) + u' '
                + entry.value(QStringLiteral("help")).toString());
        }
    }
    return Success;
}

int waitReady(const Options &options)
{
    if (!waitForDaemon(milliseconds(QString::fromStdString(options.timeout)))) {
        throw CommandError(Unavailable,
            QLatin1String("no ozdeviced became ready under ") + devicePath(QStringLiteral("/pps"))
                + QLatin1String(" within ") + QString::fromStdString(options.timeout));
    }
    return Success;
}

// The tour: what a hand does with the card, while a program watches it.
int demo(const Options &options)
{
    struct Step
    {
        const char *story;
        const char *verb;
    };
    static constexpr Step tour[] = {
        {"someone inserts a card", "mount"},
        {"an application writes a photo", "busy"},
        {"the photo is written", "idle"},
        {"the card is taken out", "unmount"},
    };
    const int pace = milliseconds(QString::fromStdString(options.pace));
    int status = Success;
    const Signals signals([&](int signal) {
        status = 128 + signal;
        QCoreApplication::quit();
    });
    const PrivatePhone phone(QString::fromStdString(options.phone));
    const auto sdcard = [](const char *verb) {
        (void)askDaemon(QStringLiteral("sim"),
            QVariantMap{{QStringLiteral("facility"), QStringLiteral("sdcard")},
                {QStringLiteral("verb"), QLatin1String(verb)}, {QStringLiteral("arguments"), QStringList()}});
    };
    sdcard("unmount");

    device::SdCardInfo card;
    const auto show = [](const char *what, const auto &value) {
        printLine(QLatin1String("      ") + QString::fromLatin1(what).leftJustified(18)
            + painted(Paint::Value, meta::valueText(QVariant::fromValue(value))));
    };
    printLine(painted(Paint::Bold, QStringLiteral("A live oz::device::SdCardInfo on a simulated phone")));
    show("state()", card.state());
    show("activity()", card.activity());
    QObject::connect(&card, qOverload<device::SdCardState::Type>(&device::SdCardInfo::stateChanged),
        [&](device::SdCardState::Type state) { show("stateChanged", state); });
    QObject::connect(&card, qOverload<device::SdCardActivity::Type>(&device::SdCardInfo::activityChanged),
        [&](device::SdCardActivity::Type activity) { show("activityChanged", activity); });

    std::size_t next = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (next == std::size(tour)) {
            QCoreApplication::quit();
            return;
        }
        printLine(painted(Paint::Dim, QLatin1String("  ... ") + QLatin1String(tour[next].story)));
        sdcard(tour[next++].verb);
    });
    timer.start(pace);
    QCoreApplication::exec();
    if (status == Success)
        printLine(
            painted(Paint::Bold, QStringLiteral("That was the tour. Next: ozdevice --help, or the README.")));
    return status;
}

} // namespace

void addPhoneCommands(CLI::App &parser, Action &action)
{
    Verbs<Options> verbs(parser, action);

    const auto [runner, runOptions] =
        verbs.add("run", "Run a command against a simulated phone of its own", run);
    runner->add_option("--phone", runOptions->phone, "The phone's file (default: the installed phone.json)");
    runner->add_option("COMMAND", runOptions->words, "The command and its arguments, after --");
    runner->footer("The phone starts before the command and ends after it; its device root is the command's\n"
                   "OZ_DEVICE_ROOT. The exit status is the command's, 127 where it cannot be started.");

    const auto [simulator, simOptions] = verbs.add(
        "sim", "Change the simulated phone while it runs; without words, list what it can be told", sim);
    simulator->add_option("FACILITY [NAME] VERB [ARGUMENT...]", simOptions->words);

    const auto [waiter, waitOptions] =
        verbs.add("wait-ready", "Wait until the services have published everything", waitReady);
    waiter->add_option("--timeout", waitOptions->timeout, "How long at most")->default_str("10s");

    const auto [guide, demoOptions] =
        verbs.add("demo", "Take a short tour: a live SD card on a simulated phone", demo);
    guide->add_option("--pace", demoOptions->pace, "The time from one step to the next")->default_str("1s");
}

} // namespace oz::tools
