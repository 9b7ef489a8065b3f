#include "publishing/StateStore.hpp"

#include "publishing/Log.hpp"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace oz::services {

namespace {

const QString Suffix = QStringLiteral(".json");

// Written whole or not at all, whatever instant the daemon is killed at; the file system is in memory, so
// nothing has to be flushed. Unlike Qt's own, it is three system calls.
bool replaceFile(const QString &file, const QByteArray &content)
{
    const QByteArray path = QFile::encodeName(file);
    const QByteArray hidden = path + ".new";
    const int descriptor =
        ::open(hidden.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0)
        return false;
    const bool written =
        ::write(descriptor, content.constData(), std::size_t(content.size())) == ssize_t(content.size());
    const int error = written ? 0 : errno;
    ::close(descriptor);
    if (!written)
        errno = error;
    return written && ::rename(hidden.constData(), path.constData()) == 0;
}

} // namespace

StateStore::StateStore(const QString &directory) : m_directory(directory)
{
    ::mkdir(QFile::encodeName(directory).constData(), 0700); // what fails here fails to save
}

QString StateStore::fileOf(const QString &name) const
{
    return m_directory + u'/' + name + Suffix;
}

QVariantMap StateStore::load(const QString &name) const
{
    if (m_directory.isEmpty())
        return QJsonDocument::fromJson(m_saved.value(name)).object().toVariantMap();
    const QByteArray path = QFile::encodeName(fileOf(name));
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    struct stat status;
    QFile file;
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)
        || ::fstat(descriptor, &status) < 0 || !S_ISREG(status.st_mode) || status.st_uid != ::geteuid())
        return {};
    return QJsonDocument::fromJson(file.readAll()).object().toVariantMap();
}

void StateStore::save(const QString &name, const QVariantMap &state)
{
    const QByteArray content =
        QJsonDocument(QJsonObject::fromVariantMap(state)).toJson(QJsonDocument::Compact);
    QByteArray &saved = m_saved[name];
    if (saved == content)
        return;
    if (m_directory.isEmpty() || replaceFile(fileOf(name), content)) {
        saved = content;
        m_hasWarned = false;
    } else if (!std::exchange(m_hasWarned, true)) {
        qCWarning(logServices).noquote()
            << "cannot save the state of" << name << "in" << m_directory + u':' << qt_error_string(errno);
    }
}

void StateStore::clear()
{
    m_saved.clear();
    if (m_directory.isEmpty())
        return;
    const QDir directory(m_directory);
    for (const QString &file : directory.entryList({u'*' + Suffix}, QDir::Files | QDir::Hidden))
        QFile::remove(directory.filePath(file));
}

} // namespace oz::services
