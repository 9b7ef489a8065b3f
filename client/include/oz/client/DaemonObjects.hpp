#pragma once

#include <QString>

/*! The objects of the daemon that tools use. */
namespace oz::client::DaemonObjects {

/*! Takes requests. It is served last, so that everything is published when it can be opened. */
inline const QString Control = QStringLiteral("/pps/system/ozdeviced/control");
/*! Tells which process the daemon is, and what feeds each facility. Everybody may read it. */
inline const QString Status = QStringLiteral("/pps/system/ozdeviced/status");
/*! The state of the simulated phone. This and the next two are for the daemon's user only. */
inline const QString Phone = QStringLiteral("/pps/system/ozdeviced/phone");
/*! The scenario that plays, or was played last; the daemon's request "scenario" has its log. */
inline const QString Scenario = QStringLiteral("/pps/system/ozdeviced/scenario");
/*! How many requests of applications have been observed; the daemon's request "requests" has them. */
inline const QString Requests = QStringLiteral("/pps/system/ozdeviced/requests");

} // namespace oz::client::DaemonObjects
