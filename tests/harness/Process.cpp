#include "harness/Process.hpp"

#include "harness/Testing.hpp"

#include <oz/client/DaemonClient.hpp>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <csignal>
#include <stdexcept>
#include <unistd.h>

namespace oz::harness {

namespace {

constexpr uid_t Nobody = 65534;

// The Debian packages of programs that not every system has.
QString packageOf(const QString &program)
{
    static const QHash<QString, QString> packages{{"Xephyr", "xserver-xephyr"}, {"Xorg", "xserver-xorg-core"},
        {"Xvfb", "xvfb"}, {"ModemManager", "modemmanager"}, {"dbus-daemon", "dbus-daemon"},
        {"dbusmock", "python3-dbusmock"}, {"gdbus", "libglib2.0-bin"},
        {"gst-launch-1.0", "gstreamer1.0-tools"}, {"iio-sensor-proxy", "iio-sensor-proxy"},
        {"ip", "iproute2"}, {"mke2fs", "e2fsprogs"}, {"mmcli", "modemmanager"}, {"pkill", "procps"},
        {"setpriv", "util-linux"}, {"sway", "sway"}, {"swaymsg", "sway"}, {"systemd-hostnamed", "systemd"},
        {"udisksd", "udisks2"}, {"unshare", "util-linux"}, {"upowerd", "upower"},
        {"xrandr", "x11-xserver-utils"}};
    return packages.value(QFileInfo(program).fileName());
}

} // namespace

Process::~Process()
{
    end();
}

void Process::run(
    const QString &program, const QStringList &arguments, const QProcessEnvironment &environment)
{
    setProcessEnvironment(environment);
    if (!m_errors.open())
        throw std::runtime_error("no temporary file for what " + program.toStdString() + " says");
    setStandardErrorFile(m_errors.fileName());
    start(program, arguments);
    if (!waitForStarted())
        fail("cannot be started: " + errorString());
}

void Process::end()
{
    if (state() == QProcess::NotRunning)
        return;
    kill();
    waitForFinished();
}

void Process::stall(bool stalls)
{
    ::kill(pid_t(processId()), stalls ? SIGSTOP : SIGCONT);
}

void Process::await(const std::function<bool()> &condition)
{
    bool isMet = false;
    (void)waitUntil([&] { return (isMet = condition()) || state() == QProcess::NotRunning; });
    // Its last words may have come with its end.
    if (!isMet && !condition())
        fail(state() == QProcess::NotRunning ? "has ended" : "does not do what is waited for");
}

void Process::awaitEnd()
{
    if (!waitUntil([this] { return state() == QProcess::NotRunning; }))
        fail("does not end");
}

QString Process::line()
{
    await([this] { return canReadLine() || (state() != QProcess::NotRunning && waitForReadyRead(1)); });
    return QString::fromUtf8(readLine()).trimmed();
}

QString Process::errors() const
{
    QFile file(m_errors.fileName());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

void Process::fail(const QString &what) const
{
    const QStringList words = QStringList{program()} + arguments();
    QStringList packages;
    for (const QString &word : words) {
        if (const QString package = packageOf(word); !package.isEmpty() && !packages.contains(package))
            packages.append(package);
    }
    QString text = words.join(u' ') + u' ' + what;
    if (!packages.isEmpty())
        text += " (of the Debian packages: " + packages.join(", ") + ')';
    throw std::runtime_error((text + '\n' + errors()).toStdString());
}

void awaitDaemon(QProcess *daemon)
{
    const bool isReady = client::DaemonClient().waitUntilReady(std::chrono::seconds(20), [daemon] {
        QCoreApplication::processEvents();
        return daemon->state() != QProcess::NotRunning;
    });
    if (!isReady) {
        throw std::runtime_error("the daemon does not serve: "
            + (daemon->errorString() + '\n' + daemon->readAllStandardError()).toStdString());
    }
}

QStringList asNobody(const QStringList &program)
{
    if (::geteuid() != 0)
        return program;
    const QString id = QString::number(Nobody);
    return QStringList{"setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups"} + program;
}

void giveToNobody(const QString &file)
{
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown(qPrintable(file), Nobody, Nobody), 0) << file.toStdString();
    }
}

ProgramForEverybody::ProgramForEverybody(const QString &program)
    : m_file(m_folder.filePath(QFileInfo(program).fileName()))
{
    QFile::setPermissions(
        m_folder.path(), QFile::permissions(m_folder.path()) | QFile::ReadOther | QFile::ExeOther);
    Process ldd;
    ldd.run("ldd", {program});
    ldd.awaitEnd();
    QStringList files{program};
    for (const QString &line : QString::fromUtf8(ldd.readAll()).split('\n')) {
        const QString library = line.section(" => ", 1).section(" (", 0, 0);
        if (!library.isEmpty() && !library.startsWith("/lib") && !library.startsWith("/usr"))
            files.append(library);
    }
    for (const QString &file : files) {
        const QString copy = m_folder.filePath(QFileInfo(file).fileName());
        if (!QFile::copy(file, copy)
            || !QFile::setPermissions(copy, QFile::permissions(copy) | QFile::ReadOther | QFile::ExeOther))
            throw std::runtime_error("cannot copy " + file.toStdString());
    }
}

void ProgramForEverybody::enter(QProcessEnvironment *environment) const
{
    environment->insert("LD_LIBRARY_PATH", m_folder.path());
}

QString namespaceProblem(const QStringList &options)
{
    Process unshare;
    unshare.run("unshare", options + QStringList{"true"});
    unshare.awaitEnd();
    return unshare.exitCode() == 0 ? QString() : "the system refuses it: " + unshare.errors();
}

} // namespace oz::harness
