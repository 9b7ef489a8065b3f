#pragma once

#include "base/UniqueFd.hpp"

#include <QByteArray>

#include <optional>
#include <sys/stat.h>

namespace oz {

/*!
 * The right to decide what lies at the place of an object. It is the flock on what lies at ".NAME.tmp" beside
 * the object, which is also the file that a new object is written to: renaming it over the object gives the
 * lock up together with the name. A holder that is killed leaves at most an unlocked ".NAME.tmp", which the
 * next one takes over. Readers need no lock and cannot open that file.
 */
class PlaceLock
{
public:
    /*! For the object whose place is \a file, in \a folder. */
    PlaceLock(int folder, const QByteArray &file);
    /*! Gives the lock up, where it was not renamed away. */
    ~PlaceLock();
    PlaceLock(const PlaceLock &) = delete;
    PlaceLock &operator=(const PlaceLock &) = delete;

    /*! Waits for the lock; 0 or the errno, which is EBUSY where another holds it for longer than a second. */
    [[nodiscard]] int acquire();
    /*! The status of the file at the object's path, without following a link; unset if there is none. */
    [[nodiscard]] const std::optional<struct stat> &present() const { return m_present; }

    /*! The file to write to; it may hold something where a former holder was killed. */
    [[nodiscard]] int fd() const { return m_fd.get(); }
    [[nodiscard]] const struct stat &status() const { return m_status; }
    /*! Puts the file in the place of the object; 0 or the errno. The file is the caller's from then on. */
    [[nodiscard]] int rename(UniqueFd *file);

private:
    void look();

    int m_folder;
    QByteArray m_file;
    QByteArray m_name;
    QByteArray m_temporary;
    UniqueFd m_fd;
    struct stat m_status
    {
    };
    std::optional<struct stat> m_present;
};

/*! ".NAME" and \a suffix for the object at \a file, which is no name of an object: what is under construction
 * there. */
[[nodiscard]] QByteArray hiddenName(const QByteArray &file, const char *suffix);

} // namespace oz
