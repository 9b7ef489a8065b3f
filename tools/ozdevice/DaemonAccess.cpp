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

// Anybody may see this of a process, unlike what it answers to its own user.
bool isStopped(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    const QByteArray stat = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return stat.mid(stat.lastIndexOf(')') + 2, 1).toLower() == "t";
}

QVariantMap readStatus()
{
    PpsObject status(DaemonObjects::Status);
    if (!status.open(PpsOpenMode::Subscribe))
        return {};
    return PpsObject::decode(status.read()).value(QStringLiteral("@status")).toMap();
}

} // namespace

DaemonState daemonState()
{
    DaemonState daemon;
    daemon.status = readStatus();
    daemon.age = ageOf(DaemonObjects::Status);
    const qint64 process = daemon.status.value(QStringLiteral("pid")).toLongLong();
    const QString name = QStringLiteral("ozdeviced (process %1)").arg(process);
    const DaemonClient control;
    try {
        (void)control.ask(QStringLiteral("describe"), {}, {AnswerDeadline});
        daemon.isRunning = true;
    } catch (const DaemonError &error) {
        if (error.kind() != DaemonError::Unreachable)
            daemon.problem = name + QLatin1String(" does not answer");
        else if (!control.isReady())
            daemon.problem = QStringLiteral("no ozdeviced is running");
        else if (isStopped(process))
            daemon.problem = name + QLatin1String(" is stopped");
        else
            daemon.isRunning = true;
    }
    return daemon;
}

QString unfedText(const DaemonState &daemon)
{
    return QLatin1String("nothing feeds the tree under ") + devicePath(QStringLiteral("/pps"))
        + QLatin1String(": ") + daemon.problem;
}

std::vector<SourceState> sourceStates(const DaemonState &daemon)
{
    std::vector<SourceState> states;
    const QVariantMap facilities = daemon.status.value(QStringLiteral("facilities")).toMap();
    const QVariantMap sources = daemon.status.value(QStringLiteral("sources")).toMap();
    for (auto source = sources.cbegin(); source != sources.cend(); ++source) {
        const QVariantMap facility = facilities.value(source.key()).toMap();
        states.push_back({source.key(), facility.value(QStringLiteral("source"), *source).toString(),
            facility.value(QStringLiteral("state")).toString(),
            facility.value(QStringLiteral("reason")).toString(),
            facility.value(QStringLiteral("auto")).toBool()});
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
            const QString reason = isAbsent ? QStringLiteral("no ozdeviced is running")
                                            : error.text() + QLatin1String(" (it is for the daemon's user)");
            throw CommandError(Unavailable,
                QLatin1String("cannot reach the services under ") + devicePath(QStringLiteral("/pps"))
                    + QLatin1String(": ") + reason);
        }
        if (error.kind() != DaemonError::Refused)
            throw CommandError(Failed, QLatin1String("the services did not answer: ") + error.text());
        // It refuses what means nothing with EINVAL.
        throw CommandError(error.error() == EINVAL ? WrongUse : Failed, error.text());
    }
}

std::unique_ptr<client::PrivateDaemon> startPhone(const QString &phoneFile)
{
    // The daemon is beside this program, in a build tree as when installed.
    const QString program = QCoreApplication::applicationDirPath() + QLatin1String("/ozdeviced");
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
