#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QByteArray>
#include <QString>
#include <QStringList>

/*!
 * Files that a service keeps in the tree for itself, beside its objects. They are named by device paths, as
 * objects are.
 *
 * No link is followed on the way from the device root, no folder is entered that belongs to a stranger, and a
 * file of another user counts as none: whoever can write somewhere in the tree has no part in what a service
 * reads back, and makes it write nowhere else. New folders and files are for their user alone.
 *
 * The functions give 0 or an errno; one that takes \a problem explains there what the errno alone does not.
 */
namespace oz::TreeFiles {

/*! Opens the file for reading and writing and makes it where it is not there; \a descriptor is the caller's.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT int open(const QString &path, int *descriptor, QString *problem = nullptr);

/*! Reads the whole file. */
[[nodiscard]] OZ_SUPPORT_EXPORT int read(const QString &path, QByteArray *content);

/*! Writes the whole file in one step, whatever instant the process is killed at. It does not wait for a disk.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT int replace(const QString &path, const QByteArray &content);

/*! Removes the file, the link or the socket of a dead service at \a path. */
OZ_SUPPORT_EXPORT int remove(const QString &path);

/*! The names of what is in the folder \a path; none where it cannot be read. */
[[nodiscard]] OZ_SUPPORT_EXPORT QStringList list(const QString &path);

} // namespace oz::TreeFiles
