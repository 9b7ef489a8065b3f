#pragma once

#include <QString>

/*! The objects of the daemon that tools use. */
namespace oz::client::DaemonObjects {

/*! Takes requests. It is served last, so that everything is published when it can be opened. */
inline const QString Control = QStringLiteral("/pps/system/ozdeviced/control");
/*! Tells which process the daemon is, and what feeds each facility. Everybody may read it. */
inline const QString Status = QStringLiteral("/pps/system/ozdeviced/status");

} // namespace oz::client::DaemonObjects
