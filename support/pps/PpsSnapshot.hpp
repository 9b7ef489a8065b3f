#pragma once

#include "base/UniqueFd.hpp"
#include "files/FileIdentity.hpp"

#include <QByteArray>

#include <fcntl.h>
#include <sys/types.h>

namespace oz {

/*! One reading of a state object. */
struct PpsSnapshot
{
    int error = 0; //!< the errno where it could not be read; ENOENT where it is gone
    FileIdentity identity{};
    mode_t mode = 0;
    uid_t owner = 0;
    gid_t group = 0;
    QByteArray content{};

    /*!
     * Reads the object at \a path, which counts from \a folder where that is a descriptor. \a flags are
     * further ones for opening it. With \a keepOpen the descriptor is handed out, which keeps the inode from
     * reuse.
     */
    [[nodiscard]] static PpsSnapshot load(
        const QByteArray &path, int folder = AT_FDCWD, int flags = 0, UniqueFd *keepOpen = nullptr);

    /*! True if the object at \a path has not changed since this reading. */
    [[nodiscard]] bool isCurrent(const QByteArray &path) const;

    void note(const struct stat &status);
};

} // namespace oz
