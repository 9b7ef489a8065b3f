#include "files/TreeFolder.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>

namespace oz {

namespace {

constexpr int FolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool isLink(int folder, const QByteArray &name)
{
    struct stat status;
    return ::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

UniqueFd openRoot(const QByteArray &root, TreeFolder::Make make)
{
    const QByteArray path = root.isEmpty() ? QByteArray("/") : root;
    UniqueFd fd(::open(path.constData(), FolderFlags));
    if (fd || errno != ENOENT || make == TreeFolder::Make::No)
        return fd;
    for (qsizetype end = path.indexOf('/', 1);; end = path.indexOf('/', end + 1)) {
        const QByteArray folder = end < 0 ? path : path.first(end);
        if (::mkdir(folder.constData(), 0755) < 0 && errno != EEXIST)
            return {};
        if (end < 0)
            return UniqueFd(::open(path.constData(), FolderFlags));
    }
}

} // namespace

QString linkProblem(const QByteArray &path)
{
    return u'\'' + QFile::decodeName(path) + QLatin1String("' is a link, which no publisher follows");
}

int TreeFolder::open(const QByteArray &file, Make make, mode_t mode)
{
    m_problem.clear();
    m_fd.reset();
    const QByteArray root = QFile::encodeName(deviceRoot());
    if (!file.startsWith(root) || !QByteArrayView(file).sliced(root.size()).startsWith('/'))
        return EINVAL;
    UniqueFd here = openRoot(root, make);
    struct stat status;
    if (!here || ::fstat(here.get(), &status) < 0)
        return errno;
    const bool isShared = status.st_mode & (S_IWGRP | S_IWOTH);
    std::set<uid_t> owners{0, ::geteuid(), status.st_uid};

    const QByteArrayView folders = QByteArrayView(file).first(file.lastIndexOf('/'));
    for (qsizetype begin = root.size() + 1, end = 0; begin <= folders.size(); begin = end + 1) {
        end = folders.indexOf('/', begin);
        end = end < 0 ? folders.size() : end;
        const QByteArray name = folders.sliced(begin, end - begin).toByteArray();
        const auto enter = [&] {
            return UniqueFd(::openat(here.get(), name.constData(), FolderFlags | O_NOFOLLOW));
        };
        UniqueFd next = enter();
        if (!next && errno == ENOENT && make == Make::Yes) {
            const bool isFirst = begin == root.size() + 1;
            if (::mkdirat(here.get(), name.constData(), isFirst ? 0755 : mode) < 0 && errno != EEXIST)
                return errno;
            next = enter();
        }
        if (!next) {
            const int error = errno;
            if (error != ENOTDIR || !isLink(here.get(), name))
                return error;
            m_problem = linkProblem(file.first(end));
            return ELOOP;
        }
        if (::fstat(next.get(), &status) < 0)
            return errno;
        if (begin == root.size() + 1 && !isShared)
            owners.insert(status.st_uid);
        if (!owners.contains(status.st_uid)) {
            m_problem = u'\'' + QFile::decodeName(file.first(end)) + QLatin1String("' belongs to user ")
                + QString::number(status.st_uid) + QLatin1String(", who is none of the tree's");
            return EPERM;
        }
        here = std::move(next);
    }
    m_fd = std::move(here);
    return 0;
}

bool TreeFolder::isFolderOf(const QByteArray &file) const
{
    struct stat own;
    struct stat present;
    return ::fstat(m_fd.get(), &own) == 0 && ::stat(folderOf(file).constData(), &present) == 0
        && own.st_dev == present.st_dev && own.st_ino == present.st_ino;
}

} // namespace oz
