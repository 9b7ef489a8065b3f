#pragma once

#include "ozdevice/Diagnosis.hpp"

#include <QString>
#include <QVariantMap>

#include <functional>
#include <utility>

namespace oz::tools {

/*! The description of a device that stands beside the steps of a recording, for the reader of a bug report.
 */
struct DeviceReport
{
    QString note; //!< what the user says
    QList<std::pair<QString, QString>>
        system; //!< the versions of what runs, by key, in the order of the file
    Diagnosis diagnosis;
};

/*! Describes the device under the device root. Throws CommandError if no services run. */
[[nodiscard]] DeviceReport describeDevice(const QString &note);

/*! Replaces everything that a user, a service or a name on the device put into \a report by what \a mask
 * returns, which is as many texts in the same order. */
void maskReport(DeviceReport &report, const std::function<QStringList(const QStringList &texts)> &mask);

/*! The value of the member "report" of a scenario's file. */
[[nodiscard]] QString reportJson(const DeviceReport &report);
/*! Reads that value, and passes over what this version does not know. */
[[nodiscard]] DeviceReport reportFrom(const QVariantMap &value);

void printReport(const DeviceReport &report);

} // namespace oz::tools
