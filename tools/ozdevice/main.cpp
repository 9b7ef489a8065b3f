// The command of the library: looks at the device, changes what can be changed, and simulates what is not
// there.

#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <iostream>
#include <string_view>

using namespace oz::tools;

namespace {

void addVerbs(const Verb &parser, Action &action)
{
    addListVerb(parser, action);
    addShowVerb(parser, action);
    addDescribeVerb(parser, action);
    addWatchVerb(parser, action);
    addTopVerb(parser, action);
    addCallVerb(parser, action);
    addSetVerb(parser, action);
    addStatusVerb(parser, action);
    addDoctorVerb(parser, action);
    addRunVerb(parser, action);
    addSimVerb(parser, action);
    addPlayVerb(parser, action);
    addRecordVerb(parser, action);
    addWaitReadyVerb(parser, action);
    addDemoVerb(parser, action);
    addPpsVerbs(parser, action);
    addCompletionVerbs(parser, action);
}

// A word where a verb is wanted, which is none: the parser would only say that it did not expect it.
void checkVerbs(const CLI::App &parser, char **words, char **end)
{
    const CLI::App *verb = &parser;
    for (; words != end && !verb->get_subcommands({}).empty(); ++words) {
        const std::string word = *words;
        if (word.rfind('-', 0) == 0)
            continue;
        const CLI::App *named = nullptr;
        QStringList known;
        for (const CLI::App *sub : verb->get_subcommands({})) {
            if (sub->get_name() == word)
                named = sub;
            if (!sub->get_group().empty())
                known.append(QString::fromStdString(sub->get_name()));
        }
        if (!named) {
            throw CommandError(WrongUse,
                unknownText(QString::fromStdString(verb->get_name()) + QLatin1String(" has no verb"),
                    QString::fromStdString(word), known));
        }
        verb = named;
    }
}

int execute(int argc, char **argv)
{
    CLI::App parser(
        "Looks at a phone's hardware and radios, changes what can be changed, and simulates a phone.",
        "ozdevice");
    bool verbose = false;
    parser.set_version_flag("--version", OZ_VERSION);
    parser.require_subcommand(1);
    parser.set_help_all_flag("--help-all", "The help of all verbs");
    parser.add_flag("-v,--verbose", verbose, "Print the library's own warnings too");
    parser.footer(
        "The device is the one under OZ_DEVICE_ROOT, else / where /pps exists, else\n"
        "$XDG_RUNTIME_DIR/ozdevice. `ozdevice run -- COMMAND` has one of its own.\n\n"
        "Exit status: 0 done, 1 refused or failed, 2 wrong use, 3 an object is not there or not for you.");
    Action action;
    addVerbs(Verb(&parser), action);
    char **const dashes = std::find(argv, argv + argc, std::string_view("--"));
    if (dashes != argv + argc)
        setWordsAfterDashes({dashes + 1, argv + argc});
    checkVerbs(parser, argv + 1, dashes);
    try {
        parser.parse(int(dashes - argv), argv);
    } catch (const CLI::Success &help) {
        parser.exit(help);
        if (!std::cout.flush())
            throw CommandError(Failed, QStringLiteral("cannot write to standard output"));
        return Success;
    } catch (const CLI::ParseError &error) {
        throw CommandError(
            WrongUse, QString::fromUtf8(error.what()) + QLatin1String(" (see ozdevice --help)"));
    }
    const QCoreApplication application(argc, argv);
    captureLog(verbose);
    return action();
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return execute(argc, argv);
    } catch (const CommandError &error) {
        complain(QString::fromUtf8(error.what()));
        return error.status();
    }
}
