#pragma once

#include <oz/client/PrivateDaemon.hpp>

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace oz::tools {

/*! The state of the daemon under the device root. */
struct DaemonState
{
    bool isRunning = false; //!< it answers, or its process exists and belongs to another user
    QString problem; //!< the reason why it is not running
    QVariantMap
        status; //!< the attributes of its status object, which may be left over from a daemon that has ended
    std::optional<std::chrono::seconds> age; //!< of the status object
};

[[nodiscard]] DaemonState daemonState();

/*! Says that nothing feeds the tree, and why. */
[[nodiscard]] QString notFedText(const DaemonState &daemon);

/*! The source of one of the daemon's facilities. */
struct SourceState
{
    QString facility;
    QString source;
    QString state; //!< "known", "absent" or "none"; empty for unknown
    QString reason; //!< of a source that is absent
    bool isAutomatic = false; //!< true if the daemon chose it, false if the configuration names it
    QStringList instances = {}; //!< which applications see of the facility, where they were asked for
};

[[nodiscard]] std::vector<SourceState> sourceStates(const DaemonState &daemon);

/*! Returns whether the daemon feeds a simulated phone and nothing else. */
[[nodiscard]] bool isPhoneSimulated(const DaemonState &daemon);

/*! Sends a request ("sim", "describe") to the daemon under the device root and returns the "dat" of the
 * answer. Throws CommandError if there is no daemon or it refuses the request. */
[[nodiscard]] QVariant askDaemon(const QString &message, const QVariant &data = {});

/*! Describes the parts of the daemon's simulated phone, by their names: instances and verbs. */
[[nodiscard]] QVariantMap simulatedParts();

/*! Starts a simulated phone for this process, set up by the file \a phoneFile (empty: the installed one),
 * and makes its device root that of this process. Throws CommandError. */
[[nodiscard]] std::unique_ptr<client::PrivateDaemon> startPhone(const QString &phoneFile);

} // namespace oz::tools
