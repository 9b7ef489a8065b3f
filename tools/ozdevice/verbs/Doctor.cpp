#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/PpsObject.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cerrno>

namespace oz::tools {

namespace {

struct DoctorOptions
{
    bool json = false;
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

// What keeps a facility from being fed, where it was named in the configuration; one that the daemon chose a
// source for by itself may well be without on this device.
QString problemOf(const SourceState &state)
{
    if (state.state != u"absent" || state.isAutomatic)
        return {};
    return state.facility + QLatin1String(": the source '") + state.source + QLatin1String("' is absent: ")
        + (state.reason.isEmpty() ? QStringLiteral("it does not say why") : state.reason);
}

QString stateText(const SourceState &state)
{
    return state.state == u"known" ? QStringLiteral("works")
        : state.state.isEmpty()    ? QStringLiteral("-")
                                   : state.state;
}

qsizetype fedCount(const std::vector<SourceState> &sources)
{
    return std::count_if(
        sources.begin(), sources.end(), [](const SourceState &source) { return source.state == u"known"; });
}

void print(const std::vector<SourceState> &sources, const QStringList &problems)
{
    if (!sources.empty()) {
        QList<QStringList> rows{{QStringLiteral("facility"), QStringLiteral("source"),
            QStringLiteral("state"), QStringLiteral("why")}};
        for (const SourceState &state : sources)
            rows.append({state.facility, state.source, stateText(state), state.reason});
        printRows(rows, {}, {Paint::Bold});
        printLine({});
    }
    for (const QString &problem : problems)
        printLine(problem);
    if (sources.empty())
        return;
    const auto fed = fedCount(sources);
    if (problems.isEmpty())
        printLine(QStringLiteral("the services run, and every object can be read"));
    printLine(QStringLiteral("%1 of %2 facilities are fed").arg(fed).arg(sources.size()));
    if (fed < qsizetype(sources.size())) {
        printLines(QStringLiteral(
            "the others are unknown to applications until what the table names is there;\n"
            "`ozdevice run -- COMMAND` runs a command on a simulated phone, which has them all"));
    }
}

QJsonObject json(const std::vector<SourceState> &sources, const QStringList &problems)
{
    QJsonObject facilities;
    for (const SourceState &state : sources) {
        facilities.insert(state.facility,
            QJsonObject{{QStringLiteral("source"), state.source}, {QStringLiteral("state"), state.state},
                {QStringLiteral("auto"), state.isAutomatic}, {QStringLiteral("why"), state.reason}});
    }
    return {{QStringLiteral("facilities"), facilities}, {QStringLiteral("fed"), fedCount(sources)},
        {QStringLiteral("problems"), QJsonArray::fromStringList(problems)}};
}

int doctor(const DoctorOptions &options)
{
    const DaemonState daemon = lookAtDaemon();
    QStringList problems;
    std::vector<SourceState> sources;
    if (daemon.isRunning) {
        sources = sourceStates(daemon);
        for (const SourceState &state : sources)
            problems.append(problemOf(state));
        problems.removeAll(QString());
        if (problems.isEmpty() && fedCount(sources) == 0)
            problems.append(QStringLiteral("no facility is fed"));
    } else {
        problems.append(unfedText(daemon)
            + QLatin1String("; start ozdeviced, or run a command with `ozdevice run -- COMMAND`"));
    }
    for (const TreeObject &object : treeObjects()) {
        // What served objects a daemon that is gone has left is told already.
        if (!daemon.isRunning && !object.age)
            continue;
        if (const QString problem = problemOf(object); !problem.isEmpty())
            problems.append(problem);
    }
    if (options.json)
        printJson(json(sources, problems), QJsonDocument::Indented);
    else
        print(sources, problems);
    return problems.isEmpty() ? Success : daemon.isRunning ? Failed : Unavailable;
}

} // namespace

void addDoctorVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<DoctorOptions>(parser, action)
                                     .add("doctor",
                                         "Say what feeds each facility, or why nothing does, and what is "
                                         "wrong with the services and the "
                                         "tree",
                                         doctor);
    verb.flag("--json", options->json, "As JSON");
    verb.footer(
        "The exit status is 1 where something is wrong (an object that cannot be read, a source that the\n"
        "configuration names and that is absent, or no facility that is fed), 3 where no services run.");
}

} // namespace oz::tools
