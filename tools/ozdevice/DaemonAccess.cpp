#include "ozdevice/DaemonAccess.hpp"

#include "facilities/CommandError.hpp"
#include "ozdevice/Tree.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/Limits.hpp>
#include <oz/PpsObject.hpp>
#include <oz/client/DaemonClient.hpp>
#include <oz/client/DaemonObjects.hpp>

#include <QCoreApplication>
#include <QFile>
#include <QVariantMap>

#include <algorithm>
#include <cerrno>

namespace oz::tools {

using client::DaemonClient;
using client::DaemonError;
namespace DaemonObjects = client::DaemonObjects;

namespace {

constexpr std::chrono::milliseconds AnswerDeadline{2000};

// Every user may read the state of a process, but only the daemon's own user gets an answer from it.
bool isStopped(qint64 process)
{
    QFile file(u"/proc/%1/stat"_s.arg(process));
    const QByteArray stat = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return stat.mid(stat.lastIndexOf(')') + 2, 1).toLower() == "t";
}

QVariantMap readStatus()
{
    PpsObject status(DaemonObjects::Status);
    if (!status.open(PpsOpenMode::Subscribe))
        return {};
    return PpsObject::decode(status.read()).value(u"@status"_s).toMap();
}

} // namespace

DaemonState daemonState()
{
    DaemonState daemon;
    daemon.status = readStatus();
    daemon.age = ageOf(DaemonObjects::Status);
    const qint64 process = daemon.status.value(u"pid"_s).toLongLong();
    const QString name = u"ozdeviced (process %1)"_s.arg(process);
    const DaemonClient control;
    try {
        (void)control.ask(u"describe"_s, {}, {AnswerDeadline});
        daemon.isRunning = true;
    } catch (const DaemonError &error) {
        if (error.kind() != DaemonError::Unreachable)
            daemon.problem = name + " does not answer"_L1;
        else if (!control.isReady())
            daemon.problem = u"no ozdeviced is running"_s;
        else if (isStopped(process))
            daemon.problem = name + " is stopped"_L1;
        else
            daemon.isRunning = true;
    }
    return daemon;
}

QString notFedText(const DaemonState &daemon)
{
    return "nothing feeds the tree under "_L1 + devicePath(u"/pps"_s) + ": "_L1 + daemon.problem;
}

std::vector<SourceState> sourceStates(const DaemonState &daemon)
{
    std::vector<SourceState> states;
    const QVariantMap facilities = daemon.status.value(u"facilities"_s).toMap();
    const QVariantMap sources = daemon.status.value(u"sources"_s).toMap();
    for (auto source = sources.cbegin(); source != sources.cend(); ++source) {
        const QVariantMap facility = facilities.value(source.key()).toMap();
        states.push_back({source.key(), facility.value(u"source"_s, *source).toString(),
            facility.value(u"state"_s).toString(), facility.value(u"reason"_s).toString(),
            facility.value(u"auto"_s).toBool()});
    }
    return states;
}

bool isPhoneSimulated(const DaemonState &daemon)
{
    const auto states = sourceStates(daemon);
    const auto isFedBy = [](const char *source) {
        return [source](const SourceState &state) { return state.source == QLatin1String(source); };
    };
    return std::any_of(states.begin(), states.end(), isFedBy("simulated"))
        && std::all_of(states.begin(), states.end(),
            [&](const SourceState &state) { return isFedBy("simulated")(state) || isFedBy("none")(state); });
}

QVariant askDaemon(const QString &message, const QVariant &data)
{
    try {
        return DaemonClient().ask(message, data, {.limit = waitLimit()});
    } catch (const DaemonError &error) {
        if (error.kind() == DaemonError::Unreachable) {
            const bool isAbsent = error.error() == ENOENT || error.error() == ECONNREFUSED;
            const QString reason =
                isAbsent ? u"no ozdeviced is running"_s : error.text() + " (it is for the daemon's user)"_L1;
            throw CommandError(Unavailable,
                "cannot reach the services under "_L1 + devicePath(u"/pps"_s) + ": "_L1 + reason);
        }
        if (error.kind() != DaemonError::Refused)
            throw CommandError(Failed, "the services did not answer: "_L1 + error.text());
        // The daemon refuses a meaningless request with EINVAL.
        throw CommandError(error.error() == EINVAL ? WrongUse : Failed, error.text());
    }
}

QVariantMap simulatedParts()
{
    return askDaemon(u"describe"_s).toMap().value(u"simulated"_s).toMap();
}

std::unique_ptr<client::PrivateDaemon> startPhone(const QString &phoneFile)
{
    // The daemon stands beside this program, in a build tree and in an installation.
    const QString program = QCoreApplication::applicationDirPath() + "/ozdeviced"_L1;
    try {
        auto daemon = std::make_unique<client::PrivateDaemon>(
            client::PrivateDaemon::Setup{.program = program, .phoneFile = phoneFile, .forwardsLog = true});
        qputenv("OZ_DEVICE_ROOT", QFile::encodeName(daemon->root()));
        return daemon;
    } catch (const DaemonError &error) {
        throw CommandError(Failed, error.text());
    }
}

} // namespace oz::tools
