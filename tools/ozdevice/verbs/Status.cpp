// status and doctor: the daemon, the sources of the facilities, and the objects of the tree.

#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>

#include <QJsonArray>

#include <algorithm>

namespace oz::tools {

namespace {

struct StatusOptions
{
    bool json = false;
};

QStringList instancesOf(const SourceState &source)
{
    const FacilityEntry *entry = findFacility(source.facility);
    return entry && entry->instances ? entry->instances() : QStringList();
}

QJsonObject sourcesJson(const std::vector<SourceState> &sources)
{
    QJsonObject facilities;
    for (const SourceState &source : sources) {
        QJsonObject facility{{QStringLiteral("source"), source.source},
            {QStringLiteral("state"), source.state}, {QStringLiteral("auto"), source.isAutomatic},
            // The first key is that of status, the second one that of doctor.
            {QStringLiteral("reason"), source.reason}, {QStringLiteral("why"), source.reason}};
        if (const QStringList instances = instancesOf(source); !instances.isEmpty())
            facility.insert(QStringLiteral("instances"), QJsonArray::fromStringList(instances));
        facilities.insert(source.facility, facility);
    }
    return facilities;
}

void printSources(const std::vector<SourceState> &sources)
{
    QList<QStringList> rows{{QStringLiteral("facility"), QStringLiteral("source"), QStringLiteral("state"),
        QStringLiteral("instances"), QStringLiteral("why")}};
    for (const SourceState &source : sources) {
        const QString state = source.state == u"known" ? QStringLiteral("works")
            : source.state.isEmpty()                   ? QStringLiteral("-")
                                                       : source.state;
        rows.append({source.facility, source.source, state, instancesOf(source).join(QLatin1String(", ")),
            source.reason});
    }
    printRows(rows, {}, {Paint::Bold});
    printLine({});
}

QJsonObject statusJson(const DaemonState &daemon)
{
    QJsonObject process{{QStringLiteral("running"), daemon.isRunning},
        {QStringLiteral("tree"), devicePath(QStringLiteral("/pps"))}};
    if (const QVariant pid = daemon.status.value(QStringLiteral("pid")); pid.isValid())
        process.insert(QStringLiteral("pid"), QJsonValue::fromVariant(pid));
    if (daemon.age)
        process.insert(QStringLiteral("age"), qint64(daemon.age->count()));
    if (!daemon.problem.isEmpty())
        process.insert(QStringLiteral("problem"), daemon.problem);
    QJsonObject objects;
    for (const ObjectAge &object : objectAges()) {
        objects.insert(object.path,
            object.age ? QJsonObject{{QStringLiteral("age"), qint64(object.age->count())}}
                       : QJsonObject{{QStringLiteral("served"), true}});
    }
    return {{QStringLiteral("daemon"), process},
        {QStringLiteral("facilities"), sourcesJson(sourceStates(daemon))},
        {QStringLiteral("objects"), objects}};
}

void printStatus(const DaemonState &daemon)
{
    if (daemon.isRunning) {
        printLine(QLatin1String("ozdeviced is running: process ")
            + daemon.status.value(QStringLiteral("pid")).toString() + QLatin1String(", ")
            + devicePath(QStringLiteral("/pps"))
            + (daemon.age ? QString(QLatin1String(", status ") + ageText(*daemon.age) + QLatin1String(" old"))
                          : QString()));
        printLine({});
        printSources(sourceStates(daemon));
    }
    QList<QStringList> rows;
    for (const ObjectAge &object : objectAges()) {
        rows.append({object.path,
            object.age ? QString(ageText(*object.age) + QLatin1String(" old")) : QStringLiteral("served")});
    }
    printRows(rows);
}

int status(const StatusOptions &options)
{
    const DaemonState daemon = daemonState();
    if (options.json)
        printJson(statusJson(daemon), QJsonDocument::Indented);
    else
        printStatus(daemon);
    if (daemon.isRunning)
        return Success;
    printError(unfedText(daemon));
    return Unavailable;
}

struct DoctorOptions
{
    bool json = false;
};

// The problem that this user has with an object of the tree; empty if there is none.
QString problemOf(const ObjectAge &object)
{
    if (const int error = tryToOpen(object.path))
        return Problem{object.path, error}.text();
    PpsObject state(object.path);
    bool ok = true;
    if (object.age && state.open(PpsOpenMode::Subscribe))
        (void)PpsObject::decode(state.read(), &ok);
    return ok ? QString() : QString(object.path + QLatin1String(": its content is malformed"));
}

// Empty for a source that the daemon chose by itself: the device may lack that facility.
QString problemOf(const SourceState &source)
{
    if (source.state != u"absent" || source.isAutomatic)
        return {};
    return source.facility + QLatin1String(": the source '") + source.source + QLatin1String("' is absent: ")
        + (source.reason.isEmpty() ? QStringLiteral("it does not say why") : source.reason);
}

qsizetype fedCount(const std::vector<SourceState> &sources)
{
    return std::count_if(
        sources.begin(), sources.end(), [](const SourceState &source) { return source.state == u"known"; });
}

QStringList findProblems(const DaemonState &daemon, const std::vector<SourceState> &sources)
{
    QStringList problems;
    const auto add = [&problems](const QString &problem) {
        if (!problem.isEmpty())
            problems.append(problem);
    };
    if (!daemon.isRunning)
        add(unfedText(daemon)
            + QLatin1String("; start ozdeviced, or run a command with `ozdevice run -- COMMAND`"));
    for (const SourceState &source : sources)
        add(problemOf(source));
    if (daemon.isRunning && problems.isEmpty() && fedCount(sources) == 0)
        add(QStringLiteral("no facility is fed"));
    for (const ObjectAge &object : objectAges()) {
        // The served objects that a dead daemon has left behind are no problems of their own.
        if (daemon.isRunning || object.age)
            add(problemOf(object));
    }
    return problems;
}

void printFindings(const std::vector<SourceState> &sources, const QStringList &problems)
{
    if (!sources.empty())
        printSources(sources);
    for (const QString &problem : problems)
        printLine(problem);
    if (sources.empty())
        return;
    const qsizetype fed = fedCount(sources);
    if (problems.isEmpty())
        printLine(QStringLiteral("the services run, and every object can be read"));
    printLine(QStringLiteral("%1 of %2 facilities are fed").arg(fed).arg(sources.size()));
    if (fed < qsizetype(sources.size())) {
        printLines(QStringLiteral(
            "the others are unknown to applications until what the table names is there;\n"
            "`ozdevice run -- COMMAND` runs a command on a simulated phone, which has them all"));
    }
}

int doctor(const DoctorOptions &options)
{
    const DaemonState daemon = daemonState();
    const auto sources = daemon.isRunning ? sourceStates(daemon) : std::vector<SourceState>();
    const QStringList problems = findProblems(daemon, sources);
    if (options.json) {
        printJson(
            {{QStringLiteral("facilities"), sourcesJson(sources)}, {QStringLiteral("fed"), fedCount(sources)},
                {QStringLiteral("problems"), QJsonArray::fromStringList(problems)}},
            QJsonDocument::Indented);
    } else {
        printFindings(sources, problems);
    }
    return problems.isEmpty() ? Success : daemon.isRunning ? Failed : Unavailable;
}

} // namespace

void addStatusVerbs(const Verb &parser, Action &action)
{
    const auto [statusVerb, statusOptions] =
        Verbs<StatusOptions>(parser, action)
            .add("status",
                "Show whether the services run, what feeds each facility, and how old each object is",
                status);
    statusVerb.flag("--json", statusOptions->json, "As JSON; ages in seconds");
    statusVerb.footer("The exit status is 3 if no services run.");

    const auto [doctorVerb, doctorOptions] =
        Verbs<DoctorOptions>(parser, action)
            .add("doctor",
                "Show what feeds each facility, or why nothing does, and what is wrong with the services "
                "and the tree",
                doctor);
    doctorVerb.flag("--json", doctorOptions->json, "As JSON");
    doctorVerb.footer(
        "The exit status is 1 if something is wrong (an object that cannot be read, a source that the\n"
        "configuration names but is absent, or no facility that is fed), 3 if no services run.");
}

} // namespace oz::tools
