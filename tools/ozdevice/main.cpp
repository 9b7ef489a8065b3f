// The command ozdevice: shows and changes the device, and simulates a phone.

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
    addDemoVerb(parser, action);
    addPpsVerbs(parser, action);
    addCompletionVerbs(parser, action);
}

// Returns the call of the named verb ("ozdevice pps get"). Throws CommandError for an unknown one, with a
// better text than the parser's.
QString calledVerb(Verb verb, char **words, char **end)
{
    QString called = QString::fromStdString(verb.name());
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
        called += u' ' + QString::fromStdString(word);
    }
    return called;
}

int execute(int argc, char **argv)
{
    const oz::arguments::Parser parser(
        "Shows and changes a phone's hardware and radios, and simulates a phone.", "ozdevice", OZ_VERSION);
    const Verb program = parser.program();
    bool verbose = false;
    program.needsVerb();
    parser.addHelpOfAll();
    program.flag("-v,--verbose", verbose, "Print the library's own warnings too");
    program.footer(
        "The device is the one under OZ_DEVICE_ROOT, else under / if /pps exists, else under\n"
        "$XDG_RUNTIME_DIR/ozdevice. `ozdevice run -- COMMAND` has one of its own.\n\n"
        "Exit status: 0 success, 1 refused or failed, 2 wrong use, 3 an object is missing or not permitted.");
    Action action;
    addVerbs(program, action);
    char **const dashes = std::find(argv, argv + argc, std::string_view("--"));
    if (dashes != argv + argc)
        wordsAfterDashes().assign(dashes + 1, argv + argc);
    const QString called = calledVerb(program, argv + 1, dashes);
    try {
        if (!parser.parse(int(dashes - argv), argv)) {
            if (!std::cout.flush())
                throw CommandError(Failed, u"cannot write to standard output"_s);
            return Success;
        }
    } catch (const oz::arguments::WrongWords &error) {
        throw CommandError(WrongUse, QString::fromUtf8(error.what()) + " (see "_L1 + called + " --help)"_L1);
    }
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(OZ_VERSION));
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
