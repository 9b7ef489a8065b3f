#include "ozdevice/PrivatePhone.hpp"

#include "ozdevice/Command.hpp"
#include "ozdevice/Daemon.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <unistd.h>

namespace oz::tools {

namespace {

constexpr std::chrono::seconds StartDeadline{20};
constexpr std::chrono::milliseconds StopDeadline{5000};

} // namespace

PrivatePhone::PrivatePhone(const QString &phoneFile)
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString base = runtime.isEmpty() ? QDir::tempPath() : runtime;
    QByteArray name = QFile::encodeName(base + QLatin1String("/ozdevice-run-XXXXXX"));
    if (!::mkdtemp(name.data()))
        throw CommandError(Failed,
            QLatin1String("cannot make a device root in ") + base + QLatin1String(": ")
                + qt_error_string(errno));
    m_root = QFile::decodeName(name);
    qputenv("OZ_DEVICE_ROOT", name);

    // Beside this program, in a build tree as when installed.
    const QString program = QCoreApplication::applicationDirPath() + QLatin1String("/ozdeviced");
    QStringList arguments{QStringLiteral("--private"), QStringLiteral("--config"),
        QStringLiteral("/dev/null"), QStringLiteral("--simulated")};
    if (!phoneFile.isEmpty())
        arguments << QStringLiteral("--phone") << QFileInfo(phoneFile).absoluteFilePath();
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Ctrl-C on the terminal is for the command; the phone ends after it.
    m_daemon.setChildProcessModifier([] { ::setpgid(0, 0); });
    m_daemon.start(program, arguments);
    const bool started = m_daemon.waitForStarted()
        && waitForDaemon(StartDeadline, [this] { return !m_daemon.waitForFinished(0); });
    if (!started) {
        const QString problem = m_daemon.error() == QProcess::FailedToStart
            ? QString(program + QLatin1String(": ") + m_daemon.errorString())
            : QStringLiteral("the simulated phone did not start");
        m_daemon.kill();
        m_daemon.waitForFinished();
        QDir(m_root).removeRecursively();
        throw CommandError(Failed, problem);
    }
}

PrivatePhone::~PrivatePhone()
{
    m_daemon.terminate();
    if (!m_daemon.waitForFinished(int(StopDeadline.count()))) {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    QDir(m_root).removeRecursively();
}

} // namespace oz::tools
