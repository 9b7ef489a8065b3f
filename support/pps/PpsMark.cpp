#include "pps/PpsMark.hpp"

#include "base/UniqueFd.hpp"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace oz {

namespace {

std::atomic<quint64> s_marks = 0; // of this process

UniqueFd opened(const QString &file, int flags)
{
    return UniqueFd(::open(QFile::encodeName(file).constData(), flags | O_CLOEXEC, 0644));
}

QByteArray contentOf(const UniqueFd &file)
{
    char content[64] = "";
    return file && ::pread(file.get(), content, sizeof content - 1, 0) > 0 ? QByteArray(content)
                                                                           : QByteArray();
}

// A thread that answers marks holds a lock on its file as long as it lives.
bool isLocked(const UniqueFd &file)
{
    return file && ::flock(file.get(), LOCK_SH | LOCK_NB) < 0;
}

QString threadText(const QString &name)
{
    const QString process = name.section(u'-', 0, 0);
    const QString thread = name.section(u'-', 1);
    QFile command(QLatin1String("/proc/") + process + QLatin1String("/comm"));
    QString text = QLatin1String("process ") + process;
    if (command.open(QIODevice::ReadOnly))
        text += QLatin1String(" (") + QString::fromLocal8Bit(command.readAll()).trimmed() + u')';
    if (thread != process)
        text += QLatin1String(", thread ") + thread;
    return text;
}

} // namespace

int PpsMark::set()
{
    // All of one length, so that one replaces the other as a whole in the files of those who answer.
    const QByteArray mark = QByteArray::number(::getpid()).rightJustified(10, '0') + ' '
        + QByteArray::number(++s_marks).rightJustified(20, '0');
    const QString place = m_folder.filePath(QStringLiteral("mark"));
    const QString draft = place + u'-' + QString::fromLatin1(mark).replace(u' ', u'-');
    const UniqueFd file = opened(draft, O_CREAT | O_WRONLY | O_TRUNC);
    if (!file)
        return errno;
    if (const ssize_t written = ::write(file.get(), mark.constData(), std::size_t(mark.size()));
        written != mark.size())
        return written < 0 ? errno : EIO;
    if (::rename(QFile::encodeName(draft).constData(), QFile::encodeName(place).constData()) < 0)
        return errno;
    m_sufficient = {mark};
    return 0;
}

bool PpsMark::isAnswered()
{
    // Another waiter may have set a newer mark. Who answers that has handled what came before this one too.
    if (const QByteArray current = contentOf(opened(m_folder.filePath(QStringLiteral("mark")), O_RDONLY));
        !current.isEmpty())
        m_sufficient.insert(current);
    m_busy.clear();
    for (const QString &name : m_folder.entryList({QStringLiteral("[0-9]*-*")}, QDir::Files)) {
        const UniqueFd file = opened(m_folder.filePath(name), O_RDONLY);
        if (!m_sufficient.contains(contentOf(file)) && isLocked(file))
            m_busy.append(name);
    }
    return m_busy.isEmpty();
}

QString PpsMark::busyText(std::chrono::milliseconds after) const
{
    QStringList threads;
    for (const QString &name : m_busy)
        threads.append(threadText(name));
    return QStringLiteral("still busy after %1 s is ").arg(double(after.count()) / 1000)
        + threads.join(QLatin1String(" and "));
}

} // namespace oz
