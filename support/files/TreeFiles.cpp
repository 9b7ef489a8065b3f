#include <oz/TreeFiles.hpp>

#include "files/TreeFolder.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFile>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace oz::TreeFiles {

namespace {

// A file, and the folder that it is in.
class Place
{
public:
    explicit Place(const QString &path) : m_path(QFile::encodeName(devicePath(path))), m_name(nameOf(m_path))
    {
    }

    [[nodiscard]] int enter(TreeFolder::Make make) { return m_folder.open(m_path, make, 0700); }
    [[nodiscard]] int folder() const { return m_folder.fd(); }
    [[nodiscard]] const QByteArray &path() const { return m_path; }
    [[nodiscard]] const QByteArray &name() const { return m_name; }
    [[nodiscard]] QString problem() const { return m_folder.problem(); }

    /*! Opens what is there, or makes it; EPERM where it is no file of this process's user. */
    [[nodiscard]] int openFile(int flags, UniqueFd *file) const
    {
        *file = UniqueFd(
            ::openat(folder(), m_name.constData(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
        struct stat status;
        if (!*file || ::fstat(file->get(), &status) < 0)
            return errno;
        return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() ? 0 : EPERM;
    }

private:
    QByteArray m_path;
    QByteArray m_name;
    TreeFolder m_folder;
};

} // namespace

int open(const QString &path, int *descriptor, QString *problem)
{
    Place place(path);
    UniqueFd file;
    int error = place.enter(TreeFolder::Make::Yes);
    QString reason = place.problem();
    if (error == 0) {
        error = place.openFile(O_RDWR | O_CREAT, &file);
        if (error == ELOOP)
            reason = linkProblem(place.path());
        else if (error == EPERM)
            reason =
                u'\'' + QFile::decodeName(place.path()) + QLatin1String("' is not a file of this user's");
    }
    if (problem)
        *problem = reason;
    *descriptor = error ? -1 : file.release();
    return error;
}

int read(const QString &path, QByteArray *content)
{
    Place place(path);
    UniqueFd descriptor;
    if (const int error = place.enter(TreeFolder::Make::No))
        return error;
    if (const int error = place.openFile(O_RDONLY, &descriptor))
        return error;
    QFile file;
    if (!file.open(descriptor.get(), QIODevice::ReadOnly))
        return EIO;
    *content = file.readAll();
    return file.error() == QFile::NoError ? 0 : EIO;
}

int replace(const QString &path, const QByteArray &content)
{
    Place place(path);
    if (const int error = place.enter(TreeFolder::Make::Yes))
        return error;
    const QByteArray hidden = place.name() + ".new";
    // A stranger, or a process that was killed, may have left something there.
    if (::unlinkat(place.folder(), hidden.constData(), 0) < 0 && errno != ENOENT)
        return errno;
    const UniqueFd file(::openat(
        place.folder(), hidden.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file)
        return errno;
    const ssize_t written = ::write(file.get(), content.constData(), std::size_t(content.size()));
    if (written != content.size())
        return written < 0 ? errno : ENOSPC;
    const bool renamed =
        ::renameat(place.folder(), hidden.constData(), place.folder(), place.name().constData()) == 0;
    return renamed ? 0 : errno;
}

int remove(const QString &path)
{
    Place place(path);
    if (const int error = place.enter(TreeFolder::Make::No))
        return error;
    return ::unlinkat(place.folder(), place.name().constData(), 0) < 0 ? errno : 0;
}

QStringList list(const QString &path)
{
    Place inside(path + QLatin1String("/."));
    if (inside.enter(TreeFolder::Make::No))
        return {};
    const int descriptor = ::openat(inside.folder(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(
        descriptor < 0 ? nullptr : ::fdopendir(descriptor), ::closedir);
    QStringList names;
    while (const dirent *entry = folder ? ::readdir(folder.get()) : nullptr) {
        const QString name = QFile::decodeName(entry->d_name);
        if (name != u"." && name != u"..")
            names.append(name);
    }
    return names;
}

} // namespace oz::TreeFiles
