// The command of the library: looks at the device, changes what can be changed, and simulates what is not
// there.

#include "ozdevice/Command.hpp"

#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace oz::tools {

namespace {

QStringList s_libraryWarnings;
bool s_verbose = false;
std::vector<std::string> s_wordsAfterDashes;

// What the library warns of is for the verbs to tell, unless everything is wanted.
void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (s_verbose || qstrcmp(context.category, "oz.device") != 0)
        std::fprintf(stderr, "%s\n", qUtf8Printable(qFormatLogMessage(type, context, text)));
    if (type == QtWarningMsg && !s_libraryWarnings.contains(text))
        s_libraryWarnings.append(text);
}

} // namespace

const std::vector<std::string> &wordsAfterDashes()
{
    return s_wordsAfterDashes;
}

QString unavailableText(const QString &facility, const QString &problem)
{
    const bool isMissing = problem.contains(QLatin1String(std::strerror(ENOENT)));
    return facility + QLatin1String(": ") + problem
        + (isMissing ? QStringLiteral(" (is ozdeviced running? try: ozdevice run -- COMMAND)") : QString());
}

QStringList takeLibraryWarnings()
{
    return std::exchange(s_libraryWarnings, {});
}

void printLine(const QString &line)
{
    std::fputs((line + u'\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

QString painted(Paint paint, const QString &text)
{
    static const bool terminal = ::isatty(STDOUT_FILENO) && qEnvironmentVariableIsEmpty("NO_COLOR");
    if (!terminal)
        return text;
    const char *code = paint == Paint::Bold ? "\033[1m" : paint == Paint::Dim ? "\033[2m" : "\033[32m";
    return QLatin1String(code) + text + QLatin1String("\033[0m");
}

int milliseconds(const QString &duration)
{
    const struct
    {
        const char *unit;
        double factor;
    } units[] = {{"ms", 1}, {"s", 1000}, {"m", 60'000}, {"h", 3'600'000}, {"", 1000}};
    for (const auto &[unit, factor] : units) {
        if (!duration.endsWith(QLatin1String(unit)))
            continue;
        bool ok = false;
        const double number = duration.chopped(qsizetype(qstrlen(unit))).toDouble(&ok);
        if (ok && number >= 0 && number * factor <= 2e9)
            return int(number * factor);
        break;
    }
    throw CommandError(WrongUse,
        QLatin1String("'") + duration + QLatin1String("' is no time; expected 500ms, 10s, 2m or seconds"));
}

QString enumerated(const QStringList &words)
{
    if (words.isEmpty())
        return QStringLiteral("none");
    if (words.size() == 1)
        return words.first();
    return QStringList(words.mid(0, words.size() - 1)).join(QLatin1String(", ")) + QLatin1String(" and ")
        + words.last();
}

} // namespace oz::tools

using namespace oz::tools;

int main(int argc, char **argv)
{
    CLI::App parser(
        "Looks at a phone's hardware and radios, changes what can be changed, and simulates a phone.",
        "ozdevice");
    parser.set_version_flag("--version", OZ_VERSION);
    parser.require_subcommand(1);
    parser.set_help_all_flag("--help-all", "The help of all verbs");
    parser.add_flag("-v,--verbose", s_verbose, "Print the library's own warnings too");
    parser.footer(
        "The device is the one under OZ_DEVICE_ROOT, else / where /pps exists, else\n"
        "$XDG_RUNTIME_DIR/ozdevice. `ozdevice run -- COMMAND` has one of its own.\n\n"
        "Exit status: 0 done, 1 refused or failed, 2 wrong use, 3 an object is not there or not for you.");
    Action action;
    addFacilityCommands(parser, action);
    addPhoneCommands(parser, action);
    addTreeCommands(parser, action);
    addCompletionCommands(parser, action);
    char **const dashes = std::find(argv, argv + argc, std::string_view("--"));
    if (dashes != argv + argc)
        s_wordsAfterDashes.assign(dashes + 1, argv + argc);
    try {
        parser.parse(int(dashes - argv), argv);
    } catch (const CLI::Success &help) {
        return parser.exit(help);
    } catch (const CLI::ParseError &error) {
        std::fprintf(stderr, "ozdevice: %s (see ozdevice --help)\n", error.what());
        return WrongUse;
    }
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler(&handleMessage);
    try {
        return action();
    } catch (const CommandError &error) {
        std::fprintf(stderr, "ozdevice: %s\n", error.what());
        return error.status();
    }
}
