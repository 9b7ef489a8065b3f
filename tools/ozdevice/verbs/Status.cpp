// status, doctor and wait-ready: the daemon, the sources of the facilities, and the objects of the tree.

#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Durations.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>
#include <oz/client/DaemonClient.hpp>

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
        QJsonObject facility{{u"source"_s, source.source}, {u"state"_s, source.state},
            {u"auto"_s, source.isAutomatic},
            // status calls it "reason", doctor "why".
            {u"reason"_s, source.reason}, {u"why"_s, source.reason}};
        if (const QStringList instances = instancesOf(source); !instances.isEmpty())
            facility.insert(u"instances"_s, QJsonArray::fromStringList(instances));
        facilities.insert(source.facility, facility);
    }
    return facilities;
}

void printSources(const std::vector<SourceState> &sources)
{
    QList<QStringList> rows{{u"facility"_s, u"source"_s, u"state"_s, u"instances"_s, u"why"_s}};
    for (const SourceState &source : sources) {
        const QString state = source.state == u"known" ? u"works"_s
            : source.state.isEmpty()                   ? u"-"_s
                                                       : source.state;
        rows.append(
            {source.facility, source.source, state, instancesOf(source).join(", "_L1), source.reason});
    }
    printRows(rows, {}, {Paint::Bold});
    printLine({});
}

QJsonObject statusJson(const DaemonState &daemon)
{
    QJsonObject process{{u"running"_s, daemon.isRunning}, {u"tree"_s, devicePath(u"/pps"_s)}};
    if (const QVariant pid = daemon.status.value(u"pid"_s); pid.isValid())
        process.insert(u"pid"_s, QJsonValue::fromVariant(pid));
    if (daemon.age)
        process.insert(u"age"_s, qint64(daemon.age->count()));
    if (!daemon.problem.isEmpty())
        process.insert(u"problem"_s, daemon.problem);
    QJsonObject objects;
    for (const ObjectAge &object : objectAges()) {
        objects.insert(object.path,
            object.age ? QJsonObject{{u"age"_s, qint64(object.age->count())}}
                       : QJsonObject{{u"served"_s, true}});
    }
    return {{u"daemon"_s, process}, {u"facilities"_s, sourcesJson(sourceStates(daemon))},
        {u"objects"_s, objects}};
}

void printStatus(const DaemonState &daemon)
{
    if (daemon.isRunning) {
        printLine("ozdeviced is running: process "_L1 + daemon.status.value(u"pid"_s).toString() + ", "_L1
            + devicePath(u"/pps"_s)
            + (daemon.age ? QString(", status "_L1 + ageText(*daemon.age) + " old"_L1) : QString()));
        printLine({});
        printSources(sourceStates(daemon));
    }
    QList<QStringList> rows;
    for (const ObjectAge &object : objectAges()) {
        rows.append({object.path, object.age ? QString(ageText(*object.age) + " old"_L1) : u"served"_s});
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
    printError(notFedText(daemon));
    return Unavailable;
}

struct DoctorOptions
{
    bool json = false;
};

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
        printLine(u"the services run, and every object can be read"_s);
    printLine(u"%1 of %2 facilities are fed"_s.arg(fed).arg(sources.size()));
    if (fed < qsizetype(sources.size())) {
        printLines(u"the others are unknown to applications until what the table names is there;\n"
                   "`ozdevice run -- COMMAND` runs a command on a simulated phone, which has them all"_s);
    }
}

int doctor(const DoctorOptions &options)
{
    const DaemonState daemon = daemonState();
    const auto sources = daemon.isRunning ? sourceStates(daemon) : std::vector<SourceState>();
    const QStringList problems = findProblems(daemon, sources);
    if (options.json) {
        printJson({{u"facilities"_s, sourcesJson(sources)}, {u"fed"_s, fedCount(sources)},
                      {u"problems"_s, QJsonArray::fromStringList(problems)}},
            QJsonDocument::Indented);
    } else {
        printFindings(sources, problems);
    }
    return problems.isEmpty() ? Success : daemon.isRunning ? Failed : Unavailable;
}

struct WaitReadyOptions
{
    Duration timeout{10};
};

int waitReady(const WaitReadyOptions &options)
{
    if (!client::DaemonClient().waitUntilReady(options.timeout.milliseconds())) {
        throw CommandError(Unavailable,
            "no ozdeviced became ready under "_L1 + devicePath(u"/pps"_s) + " within "_L1
                + QString::number(options.timeout.seconds) + " s"_L1);
    }
    return Success;
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

    const auto [waiter, waitOptions] =
        Verbs<WaitReadyOptions>(parser, action)
            .add("wait-ready", "Wait until the services have published everything", waitReady);
    waiter.duration("--timeout", waitOptions->timeout.seconds, "The longest time to wait (10s)");
}

} // namespace oz::tools
