#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QString>

namespace oz {

/*!
 * The directory under which every device path ("/pps/...", "/dev/power/mgr") is looked up, without a trailing
 * slash; empty for the file system's own root.
 *
 * It is, in this order: the environment variable OZ_DEVICE_ROOT where it is set and not empty (ignored in
 * set-uid and set-gid programs); "/" where the directory "/pps" exists; else "$XDG_RUNTIME_DIR/ozdevice",
 * with "/run/user/UID" for an XDG_RUNTIME_DIR that is not set. A relative OZ_DEVICE_ROOT counts from the
 * current directory.
 *
 * The environment is read at each call, so a program that changes it does so before it starts a second
 * thread.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT QString deviceRoot();

/*! The place of the device path \a path (which begins with "/") in the file system: deviceRoot() + path. */
[[nodiscard]] OZ_SUPPORT_EXPORT QString devicePath(const QString &path);

} // namespace oz
