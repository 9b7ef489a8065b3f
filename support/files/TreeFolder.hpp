#pragma once

#include "base/UniqueFd.hpp"

#include <QByteArray>
#include <QString>

#include <sys/types.h>

namespace oz {

/*!
 * The folder of an object below the device root, for one who puts something there. No link is followed on the
 * way from the root, and no folder entered that belongs to somebody else than this process's user, root, and
 * whom the tree belongs to: the owner of the device root, and of its first folder where only that owner can
 * have put it there. Whoever holds a folder open works in it whatever happens to its path.
 */
class TreeFolder
{
public:
    enum class Make { No, Yes };

    /*!
     * Opens the folder of the object whose place is \a file, as devicePath() gives it; 0 or the errno, with
     * problem() where there is more to say: ELOOP for a link, EPERM for somebody else's folder. The folders
     * below the root's first that are made have the mode \a mode.
     */
    [[nodiscard]] int open(const QByteArray &file, Make make, mode_t mode = 0755);
    void close() { m_fd.reset(); }
    /*! For the calls that work at a folder; not for reading it. */
    [[nodiscard]] int fd() const { return m_fd.get(); }
    [[nodiscard]] explicit operator bool() const { return bool(m_fd); }
    /*! True if it is still the folder of \a file. */
    [[nodiscard]] bool isFolderOf(const QByteArray &file) const;
    /*! The reason for which open() failed, with the place; empty where the errno says all. */
    [[nodiscard]] QString problem() const { return m_problem; }

private:
    UniqueFd m_fd;
    QString m_problem;
};

/*! The last part of a path. */
[[nodiscard]] inline QByteArray nameOf(const QByteArray &path)
{
    return path.sliced(path.lastIndexOf('/') + 1);
}

/*! The path of the folder of \a path; "/" has none. */
[[nodiscard]] inline QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash == 0 && path.size() > 1 ? QByteArray("/") : path.first(slash);
}

/*! The error text for a \a path that is a link, which publishers do not follow. */
[[nodiscard]] QString linkProblem(const QByteArray &path);

} // namespace oz
