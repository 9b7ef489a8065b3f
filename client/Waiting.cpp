#include <oz/client/Waiting.hpp>

#include "ControlSocket.hpp"

#include <oz/client/DaemonError.hpp>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace oz::client {

namespace {

constexpr int PollEvery = 2; // milliseconds

std::atomic<quint64> s_marks = 0; // of this process

// A thread that answers marks holds a lock on its file as long as it lives.
bool isAlive(const UniqueFd &file)
{
    return ::flock(file.get(), LOCK_SH | LOCK_NB) < 0;
}

QString threadText(const QString &name)
{
    const QString process = name.section(u'-', 0, 0);
    const QString thread = name.section(u'-', 1);
    QFile command(QLatin1String("/proc/") + process + QLatin1String("/comm"));
    const QString program = command.open(QIODevice::ReadOnly)
        ? QString(QLatin1String(" (") + QString::fromLocal8Bit(command.readAll()).trimmed() + u')')
        : QString();
    return QLatin1String("process ") + process + program
        + (thread == process ? QString() : QString(QLatin1String(", thread ") + thread));
}

// Those that have not answered the mark.
QStringList busyThreads(const QDir &folder, const QByteArray &mark)
{
    QStringList busy;
    for (const QString &name : folder.entryList({QStringLiteral("[0-9]*-*")}, QDir::Files)) {
        const UniqueFd file(
            ::open(QFile::encodeName(folder.filePath(name)).constData(), O_RDONLY | O_CLOEXEC));
        char answer[64] = "";
        if (file && ::pread(file.get(), answer, sizeof answer - 1, 0) >= 0 && mark != answer && isAlive(file))
            busy.append(name);
    }
    return busy;
}

} // namespace

bool waitUntil(const std::function<bool()> &isOver, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    while (!isOver()) {
        if (deadline.hasExpired())
            return false;
        waitForInput({}, QDeadlineTimer(PollEvery), true);
    }
    return true;
}

QStringList waitUntilHandled(const QString &root, std::chrono::milliseconds limit)
{
    const QDir folder(root + QLatin1String("/handled"));
    // All of one length, so that one replaces the other as a whole in the files of those who answer.
    const QByteArray mark = QByteArray::number(::getpid()).rightJustified(10, '0') + ' '
        + QByteArray::number(++s_marks).rightJustified(20, '0');
    const QString place = folder.filePath(QStringLiteral("mark"));
    QFile file(place + QLatin1String("-") + QString::number(::getpid()));
    if (!file.open(QIODevice::WriteOnly) || file.write(mark) != mark.size() || !file.flush()
        || ::rename(QFile::encodeName(file.fileName()).constData(), QFile::encodeName(place).constData()) < 0)
        throw DaemonError(DaemonError::Lost, EIO, file.errorString());
    QStringList busy;
    if (waitUntil([&] { return (busy = busyThreads(folder, mark)).isEmpty(); }, limit))
        return {};
    for (QString &name : busy)
        name = threadText(name);
    return busy;
}

} // namespace oz::client
