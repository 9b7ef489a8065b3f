#include "ozdevice/PrivatePhone.hpp"

#include "ozdevice/Command.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QVariantMap>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace oz::tools {

const char *const DaemonControlPath = "/pps/system/ozdeviced/control";

namespace {

constexpr int StartDeadline = 20'000; // milliseconds
constexpr int StopDeadline = 5'000;

} // namespace

QVariant askDaemon(const QString &message, const QVariant &data)
{
    PpsObject control(QLatin1String(DaemonControlPath) + QLatin1String("?wait"));
    if (!control.open(PpsOpenMode::PublishSubscribe)) {
        const QString reason = control.error() == ENOENT || control.error() == ECONNREFUSED
            ? QStringLiteral("no ozdeviced is running")
            : control.errorString();
        throw CommandError(Unavailable,
            QLatin1String("cannot reach the services under ") + devicePath(QStringLiteral("/pps"))
                + QLatin1String(": ") + reason);
    }
    QVariantMap request{{QStringLiteral("msg"), message}, {QStringLiteral("id"), 1}};
    if (data.isValid())
        request.insert(QStringLiteral("dat"), data);
    bool ok = control.write(PpsObject::encode(request));
    QVariantMap answer;
    if (ok)
        answer = PpsObject::decode(control.read(&ok)).value(QStringLiteral("@control")).toMap();
    if (!ok)
        throw CommandError(Failed, QLatin1String("the services did not answer: ") + control.errorString());
    if (answer.value(QStringLiteral("err")).toInt() != 0)
        throw CommandError(Failed, answer.value(QStringLiteral("errstr")).toString());
    return answer.value(QStringLiteral("dat"));
}

bool waitForDaemon(int milliseconds, const std::function<bool()> &goOn)
{
    const QDeadlineTimer deadline(milliseconds);
    for (;;) {
        PpsObject probe{QLatin1String(DaemonControlPath)};
        if (probe.open(PpsOpenMode::Publish))
            return true;
        if (deadline.hasExpired() || !goOn())
            return false;
        QThread::msleep(5);
    }
}

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
    QStringList arguments{
        QStringLiteral("--private"), QStringLiteral("--config"), QStringLiteral("/dev/null"),
        QStringLiteral("--simulated")};
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
    if (!m_daemon.waitForFinished(StopDeadline)) {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    QDir(m_root).removeRecursively();
}

} // namespace oz::tools
