#include "ozdevice/Daemon.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/PpsObject.hpp>

#include <cerrno>

namespace oz::tools {

namespace {

struct Options
{
};

// What is wrong with an object of the tree for this user; empty where nothing is.
QString problemOf(const TreeObject &object)
{
    if (const int error = tryToOpen(object.path))
        return Problem{object.path, error}.text();
    PpsObject state(object.path);
    bool ok = true;
    if (object.age && state.open(PpsOpenMode::Subscribe))
        (void)PpsObject::decode(state.read(), &ok);
    return ok ? QString() : QString(object.path + QLatin1String(": its content is malformed"));
}

int doctor(const Options &)
{
    const DaemonState daemon = lookAtDaemon();
    QStringList problems;
    if (!daemon.isRunning) {
        problems.append(unfedText(daemon)
            + QLatin1String("; start ozdeviced, or run a command with `ozdevice run -- COMMAND`"));
    } else {
        for (const SourceState &state : sourceStates(daemon)) {
            if (state.state == u"absent") {
                problems.append(state.facility + QLatin1String(": the source '") + state.source
                    + QLatin1String("' is absent: ")
                    + (state.reason.isEmpty() ? QStringLiteral("it does not say why") : state.reason));
            } else if (state.state == u"none") {
                printLine(state.facility + QLatin1String(": nothing feeds it: ")
                    + (state.reason.isEmpty() ? QStringLiteral("its source is 'none'") : state.reason));
            }
        }
    }
    for (const TreeObject &object : treeObjects()) {
        // What served objects a daemon that is gone has left is told already.
        if (!daemon.isRunning && !object.age)
            continue;
        if (const QString problem = problemOf(object); !problem.isEmpty())
            problems.append(problem);
    }
    for (const QString &problem : problems)
        printLine(problem);
    if (problems.isEmpty())
        printLine(QStringLiteral("the services run, and every object can be read"));
    return problems.isEmpty() ? Success : daemon.isRunning ? Failed : Unavailable;
}

} // namespace

void addDoctorVerb(CLI::App &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<Options>(parser, action)
            .add("doctor", "Say what is wrong with the services and the tree, and why", doctor);
    verb->footer("The exit status is 1 where something is wrong, 3 where no services run.");
}

} // namespace oz::tools
