#include "ozdevice/FacilityInstance.hpp"

#include "facilities/CommandError.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Output.hpp"

#include <oz/DeviceFile.hpp>
#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>

#include <QFileInfo>

#include <algorithm>
#include <cerrno>

namespace oz::tools {

namespace {

// Explains a missing object of a facility whose source is "none".
QString notFedHint(const FacilityEntry &entry, int error)
{
    if (error != ENOENT)
        return {};
    for (const SourceState &state : sourceStates(daemonState())) {
        if (entry.feedingParts().contains(state.facility) && state.state == u"none")
            return " (nothing feeds it: "_L1 + state.reason + u')';
    }
    return {};
}

QString plainPath(const PpsObject &object)
{
    return object.path().section(u'?', 0, 0);
}

} // namespace

QString Problem::text() const
{
    QString text = path + ": "_L1 + qt_error_string(error);
    const QFileInfo file(devicePath(path));
    if (error == EACCES && file.exists()) {
        const auto nameOr = [](const QString &name, uint id) {
            return name.isEmpty() ? QString::number(id) : name;
        };
        text += " (it is for the user "_L1 + nameOr(file.owner(), file.ownerId()) + " and the group "_L1
            + nameOr(file.group(), file.groupId()) + u')';
    }
    return text;
}

int tryToOpen(const QString &path)
{
    if (path.startsWith("/dev/"_L1)) {
        const int descriptor = openDevice(path.toUtf8().constData(), DeviceOpen::ReadWrite);
        if (descriptor < 0)
            return errno;
        closeDevice(descriptor);
        return 0;
    }
    PpsObject object(path);
    if (object.open(PpsOpenMode::Subscribe))
        return 0;
    // A served object may be write-only.
    return object.error() == EACCES && object.open(PpsOpenMode::Publish) ? 0 : object.error();
}

std::vector<Problem> problemsOf(const QStringList &paths)
{
    std::vector<Problem> problems;
    for (const QString &path : paths) {
        if (const int error = tryToOpen(path))
            problems.push_back({path, error});
    }
    return problems;
}

FacilityInstance::FacilityInstance(const FacilityEntry &entry, const QString &selected, Presence presence)
    : m_entry(entry), m_selected(selected)
{
    const bool isMissing = selected.isEmpty() && entry.needsSelection && presence != MayBeUnselected;
    const bool isExpected =
        selected.isEmpty() || (presence == MayAppear && entry.mayAppear && entry.mayAppear(selected));
    // If its objects are missing, reportProblems() gives the reason.
    if (entry.instances && (isMissing || !isExpected) && problemsOf(entry.objects).empty()) {
        const QStringList instances = entry.instances();
        if (isMissing) {
            throw CommandError(WrongUse,
                entry.name + ": which one? --"_L1 + entry.selector + " is one of "_L1
                    + instances.join(", "_L1));
        }
        if (!instances.contains(selected)) {
            throw CommandError(Unavailable,
                entry.name + ": there is no '"_L1 + selected + "'; there is "_L1 + enumerated(instances));
        }
    }
    m_object = entry.make(selected);
}

bool FacilityInstance::reportProblems() const
{
    std::vector<Problem> problems = problemsOf(m_entry.objects);
    for (const PpsObject *pps : m_object->findChildren<PpsObject *>()) {
        const bool isKnown = std::any_of(problems.begin(), problems.end(),
            [&](const Problem &problem) { return problem.path == plainPath(*pps); });
        if (!pps->isOpen() && pps->error() != 0 && !isKnown)
            problems.push_back({plainPath(*pps), pps->error()});
    }
    for (const Problem &problem : problems)
        printError(m_entry.name + ": "_L1 + problem.text() + notFedHint(m_entry, problem.error));
    return problems.empty();
}

} // namespace oz::tools
