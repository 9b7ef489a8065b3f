#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/FacilityTable.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>

#include <QJsonArray>

namespace oz::tools {

namespace {

struct StatusOptions
{
    bool json = false;
};

QStringList instancesOf(const QString &facility)
{
    const FacilityEntry *entry = findFacility(facility);
    return entry && entry->instances ? entry->instances() : QStringList();
}

QJsonObject daemonJson(const DaemonState &daemon)
{
    QJsonObject json{{QStringLiteral("running"), daemon.isRunning},
        {QStringLiteral("tree"), devicePath(QStringLiteral("/pps"))}};
    if (const QVariant process = daemon.status.value(QStringLiteral("pid")); process.isValid())
        json.insert(QStringLiteral("pid"), QJsonValue::fromVariant(process));
    if (daemon.age)
        json.insert(QStringLiteral("age"), qint64(daemon.age->count()));
    if (!daemon.problem.isEmpty())
        json.insert(QStringLiteral("problem"), daemon.problem);
    return json;
}

QJsonObject json(const DaemonState &daemon)
{
    QJsonObject facilities;
    for (const SourceState &state : sourceStates(daemon)) {
        QJsonObject facility{{QStringLiteral("source"), state.source}, {QStringLiteral("state"), state.state},
            {QStringLiteral("reason"), state.reason}};
        if (const QStringList instances = instancesOf(state.facility); !instances.isEmpty())
            facility.insert(QStringLiteral("instances"), QJsonArray::fromStringList(instances));
        facilities.insert(state.facility, facility);
    }
    QJsonObject objects;
    for (const TreeObject &object : treeObjects()) {
        objects.insert(object.path,
            object.age ? QJsonObject{{QStringLiteral("age"), qint64(object.age->count())}}
                       : QJsonObject{{QStringLiteral("served"), true}});
    }
    return {{QStringLiteral("daemon"), daemonJson(daemon)}, {QStringLiteral("facilities"), facilities},
        {QStringLiteral("objects"), objects}};
}

void print(const DaemonState &daemon)
{
    if (daemon.isRunning) {
        printLine(QLatin1String("ozdeviced is running: process ")
            + daemon.status.value(QStringLiteral("pid")).toString() + QLatin1String(", ")
            + devicePath(QStringLiteral("/pps"))
            + (daemon.age ? QString(QLatin1String(", status ") + ageText(*daemon.age) + QLatin1String(" old"))
                          : QString()));
        QList<QStringList> rows{{QStringLiteral("facility"), QStringLiteral("source"),
            QStringLiteral("state"), QStringLiteral("instances")}};
        for (const SourceState &state : sourceStates(daemon)) {
            const QString reason =
                state.reason.isEmpty() ? QString() : QString(QLatin1String(": ") + state.reason);
            rows.append({state.facility, state.source,
                (state.state.isEmpty() ? QStringLiteral("-") : state.state) + reason,
                instancesOf(state.facility).join(QLatin1String(", "))});
        }
        printLine({});
        printRows(rows, {}, {Paint::Bold});
        printLine({});
    }
    QList<QStringList> rows;
    for (const TreeObject &object : treeObjects()) {
        rows.append({object.path,
            object.age ? QString(ageText(*object.age) + QLatin1String(" old")) : QStringLiteral("served")});
    }
    printRows(rows);
}

int status(const StatusOptions &options)
{
    const DaemonState daemon = lookAtDaemon();
    if (options.json)
        printJson(json(daemon), QJsonDocument::Indented);
    else
        print(daemon);
    if (daemon.isRunning)
        return Success;
    complain(unfedText(daemon));
    return Unavailable;
}

} // namespace

void addStatusVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<StatusOptions>(parser, action)
            .add("status",
                "Tell whether the services run, what feeds each facility, and how old each object is",
                status);
    verb.flag("--json", options->json, "As JSON; ages in seconds");
    verb.footer("The exit status is 3 where no services run.");
}

} // namespace oz::tools
