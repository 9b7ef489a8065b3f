// The command of the library: looks at the device, changes what can be changed, and simulates what is not
// there.

#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <iostream>
#include <optional>
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
    addStatusVerbs(parser, action);
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
void checkVerbs(Verb verb, char **words, char **end)
{
    for (; words != end && !verb.verbs().empty(); ++words) {
        const std::string word = *words;
        if (word.rfind('-', 0) == 0)
            continue;
        std::optional<Verb> named;
        QStringList known;
        for (const Verb &below : verb.verbs()) {
            if (below.name() == word)
                named = below;
            if (!below.isHidden())
                known.append(QString::fromStdString(below.name()));
        }
        if (!named) {
            throw CommandError(WrongUse,
                unknownText(QString::fromStdString(verb.name()) + " has no verb"_L1,
                    QString::fromStdString(word), known));
        }
        verb = *named;
    }
}

int execute(int argc, char **argv)
{
    const oz::arguments::Parser parser(
        "Looks at a phone's hardware and radios, changes what can be changed, and simulates a phone.",
        "ozdevice", OZ_VERSION);
    const Verb program = parser.program();
    bool verbose = false;
    program.needsVerb();
    parser.addHelpOfAll();
    program.flag("-v,--verbose", verbose, "Print the library's own warnings too");
    program.footer(
        "The device is the one under OZ_DEVICE_ROOT, else / where /pps exists, else\n"
        "$XDG_RUNTIME_DIR/ozdevice. `ozdevice run -- COMMAND` has one of its own.\n\n"
        "Exit status: 0 done, 1 refused or failed, 2 wrong use, 3 an object is not there or not for you.");
    Action action;
    addVerbs(program, action);
    char **const dashes = std::find(argv, argv + argc, std::string_view("--"));
    if (dashes != argv + argc)
        wordsAfterDashes().assign(dashes + 1, argv + argc);
    checkVerbs(program, argv + 1, dashes);
    try {
        if (!parser.parse(int(dashes - argv), argv)) {
            if (!std::cout.flush())
                throw CommandError(Failed, u"cannot write to standard output"_s);
            return Success;
        }
    } catch (const oz::arguments::WrongWords &error) {
        throw CommandError(WrongUse, QString::fromUtf8(error.what()) + " (see ozdevice --help)"_L1);
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
        printError(QString::fromUtf8(error.what()));
        return error.status();
    }
}
