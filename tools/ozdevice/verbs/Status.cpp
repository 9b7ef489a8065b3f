// status, doctor and wait-ready: the daemon, the sources of the facilities, and the objects of the tree.

#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Diagnosis.hpp"
#include "ozdevice/Durations.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/client/DaemonClient.hpp>

#include <QJsonArray>

#include <algorithm>

namespace oz::tools {

namespace {

struct StatusOptions
{
    bool json = false;
};

QJsonObject sourcesJson(const std::vector<SourceState> &sources)
{
    QJsonObject facilities;
    for (const SourceState &source : sources) {
        QJsonObject facility{{u"source"_s, source.source}, {u"state"_s, source.state},
            {u"auto"_s, source.isAutomatic},
            // status calls it "reason", doctor "why".
            {u"reason"_s, source.reason}, {u"why"_s, source.reason}};
        if (!source.instances.isEmpty())
            facility.insert(u"instances"_s, QJsonArray::fromStringList(source.instances));
        facilities.insert(source.facility, facility);
    }
    return facilities;
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
    return {{u"daemon"_s, process}, {u"facilities"_s, sourcesJson(sourcesWithInstances(daemon))},
        {u"objects"_s, objects}};
}

void printStatus(const DaemonState &daemon)
{
    if (daemon.isRunning) {
        printLine("ozdeviced is running: process "_L1 + daemon.status.value(u"pid"_s).toString() + ", "_L1
            + devicePath(u"/pps"_s)
            + (daemon.age ? QString(", status "_L1 + ageText(*daemon.age) + " old"_L1) : QString()));
        printLine({});
        printSources(sourcesWithInstances(daemon));
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
    const auto [sources, problems] = diagnose(daemon);
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
