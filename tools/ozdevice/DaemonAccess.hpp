#pragma once

#include <oz/client/PrivateDaemon.hpp>

#include <QString>
#include <QVariantMap>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace oz::tools {

/*! What can be seen of the daemon under the device root. */
struct DaemonState
{
    bool isRunning = false; //!< it answers, or is another user's and its process is there
    QString problem; //!< why not
    QVariantMap status; //!< the attributes of its status object, also of one that was left behind
    std::optional<std::chrono::seconds> age; //!< of the status object
};

[[nodiscard]] DaemonState daemonState();

/*! That nothing feeds the tree, and why. */
[[nodiscard]] QString unfedText(const DaemonState &daemon);

/*! What the daemon says of a facility's source, under the name that it has there. */
struct SourceState
{
    QString facility;
    QString source;
    QString state; //!< "known", "absent" or "none"; empty for unknown
    QString reason; //!< of an absent one
    bool isAutomatic = false; //!< whether the daemon chose it by itself
};

[[nodiscard]] std::vector<SourceState> sourceStates(const DaemonState &daemon);

/*! Whether all that it feeds is a simulated phone's. */
[[nodiscard]] bool isPhoneSimulated(const DaemonState &daemon);

/*!
 * Sends a request ("sim", "describe") to the daemon under the device root and waits for the answer, whose
 * "dat" it gives; throws CommandError where there is no daemon or the request is refused.
 */
[[nodiscard]] QVariant askDaemon(const QString &message, const QVariant &data = {});

/*! Starts a simulated phone of this process's own with the phone's file \a phoneFile (empty: the installed
 * one), and makes its device root this process's; throws CommandError. */
[[nodiscard]] std::unique_ptr<client::PrivateDaemon> startPhone(const QString &phoneFile);

} // namespace oz::tools
