#include "ozdevice/Diagnosis.hpp"

#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"

#include <oz/PpsObject.hpp>

#include <algorithm>

namespace oz::tools {

namespace {

// Returns the problem that this user has with an object of the tree, if any.
QString problemOf(const ObjectAge &object)
{
    if (const int error = tryToOpen(object.path))
        return Problem{object.path, error}.text();
    PpsObject state(object.path);
    bool ok = true;
    if (object.age && state.open(PpsOpenMode::Subscribe))
        (void)PpsObject::decode(state.read(), &ok);
    return ok ? QString() : QString(object.path + ": its content is malformed"_L1);
}

// Returns nothing for a source that the daemon chose by itself: the device may lack that facility.
QString problemOf(const SourceState &source)
{
    if (source.state != u"absent" || source.isAutomatic)
        return {};
    return source.facility + ": the source '"_L1 + source.source + "' is absent: "_L1
        + (source.reason.isEmpty() ? u"it does not say why"_s : source.reason);
}

QStringList findProblems(const DaemonState &daemon, const std::vector<SourceState> &sources)
{
    QStringList problems;
    const auto add = [&problems](const QString &problem) {
        if (!problem.isEmpty())
            problems.append(problem);
    };
    if (!daemon.isRunning)
        add(notFedText(daemon) + "; start ozdeviced, or run a command with `ozdevice run -- COMMAND`"_L1);
    for (const SourceState &source : sources)
        add(problemOf(source));
    if (daemon.isRunning && problems.isEmpty() && fedCount(sources) == 0)
        add(u"no facility is fed"_s);
    for (const ObjectAge &object : objectAges()) {
        // The served objects that a dead daemon has left behind are no problems of their own.
        if (daemon.isRunning || object.age)
            add(problemOf(object));
    }
    return problems;
}

} // namespace

Diagnosis diagnose(const DaemonState &daemon)
{
    Diagnosis diagnosis;
    if (daemon.isRunning)
        diagnosis.sources = sourcesWithInstances(daemon);
    diagnosis.problems = findProblems(daemon, diagnosis.sources);
    return diagnosis;
}

std::vector<SourceState> sourcesWithInstances(const DaemonState &daemon)
{
    std::vector<SourceState> sources = sourceStates(daemon);
    for (SourceState &source : sources) {
        const FacilityEntry *entry = findFacility(source.facility);
        if (entry && entry->instances)
            source.instances = entry->instances();
    }
    return sources;
}

qsizetype fedCount(const std::vector<SourceState> &sources)
{
    return std::count_if(
        sources.begin(), sources.end(), [](const SourceState &source) { return source.state == u"known"; });
}

void printSources(const std::vector<SourceState> &sources)
{
    QList<QStringList> rows{{u"facility"_s, u"source"_s, u"state"_s, u"instances"_s, u"why"_s}};
    for (const SourceState &source : sources) {
        const QString state = source.state == u"known" ? u"works"_s
            : source.state.isEmpty()                   ? u"-"_s
                                                       : source.state;
        rows.append({source.facility, source.source, state, source.instances.join(", "_L1), source.reason});
    }
    printRows(rows, {}, {Paint::Bold});
    printLine({});
}

} // namespace oz::tools
