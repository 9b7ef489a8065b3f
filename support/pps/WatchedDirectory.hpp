#pragma once

#include <oz/OnceUntilWell.hpp>

#include <QByteArray>
#include <QString>

#include <cerrno>
#include <cstdint>
#include <map>
#include <memory>
#include <sys/inotify.h>
#include <system_error>

namespace oz {

class WatchedFile;

/*! A directory that a PpsWatcher watches: for files in it, for one that is to appear in it, or for being
 * moved or removed itself. */
class WatchedDirectory
{
public:
    WatchedDirectory(const QByteArray &at, WatchedDirectory *above) : path(at), parent(above) { }

    /*! The events of inotify to ask for. */
    [[nodiscard]] std::uint32_t events() const
    {
        // A publish is a rename onto the name, a removal an unlink, or a rename of the object itself. The
        // birth of a file under construction is neither.
        constexpr std::uint32_t OfFiles = IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
        // Directories appear by mkdir().
        constexpr std::uint32_t OfDirectories = IN_MOVED_TO | IN_CREATE;
        constexpr std::uint32_t Own = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
        return Own | (files.empty() ? 0 : OfFiles) | (awaited ? OfDirectories : 0);
    }
    /*! The root directory is neither moved nor removed. */
    [[nodiscard]] bool isNeeded() const { return parent || !files.empty() || awaited; }
    [[nodiscard]] bool isMissing() const { return error == ENOENT || error == ENOTDIR; }
    /*! Changes in it, or its appearance, are noticed. */
    [[nodiscard]] bool isFollowed() const
    {
        return descriptor >= 0 || (isMissing() && parent && parent->isFollowed());
    }
    /*! It has files whose changes are not noticed. */
    [[nodiscard]] bool isBlind() const { return !files.empty() && !isFollowed(); }
    /*! Why it is not watched, with the limit that has been met. */
    [[nodiscard]] QString reason() const
    {
        QString reason = QString::fromStdString(std::generic_category().message(error));
        if (error == ENOSPC)
            reason += QLatin1String("; the limit is fs.inotify.max_user_watches");
        if (error == EMFILE)
            reason += QLatin1String("; the limit is fs.inotify.max_user_instances, or that of open files");
        return reason;
    }

    const QByteArray path;
    WatchedDirectory *const parent;
    int children = 0; //!< directories in it that are watched or awaited
    int awaited = 0; //!< children that are missing
    bool isAwaited = false; //!< counted as such by the parent
    int descriptor = -1;
    int error = 0; //!< why there is no descriptor
    OnceUntilWell blindness;
    std::map<QByteArray, std::unique_ptr<WatchedFile>> files;
};

} // namespace oz
