#include "miracast/CastOrigin.hpp"

#include "publishing/Log.hpp"

#include <oz/DeviceRoot.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <chrono>
#include <unistd.h>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

const QString CasterName = QStringLiteral("ozcast");
constexpr auto FirstCasterPause = 1s;
constexpr auto LongestCasterPause = 60s;

} // namespace

CastChild::CastChild(const QString &program)
    : m_program(program), m_absence(QStringLiteral("ozcast has not told yet what it can do")),
      m_again(FirstCasterPause, LongestCasterPause)
{
    m_again.callOnTimeout(this, &CastChild::start);
    connect(&m_child, &ChildProcess::ended, this, &CastChild::onEnded);
}

QString CastChild::installedProgram()
{
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath(CasterName);
    return QFileInfo(beside).isExecutable() ? beside : QStandardPaths::findExecutable(CasterName);
}

QString CastChild::notInstalled()
{
    return QStringLiteral("ozcast is not there; install the package ozcast");
}

void CastChild::start()
{
    m_again.stop();
    m_isUsed = false;
    const QByteArray root = "OZ_DEVICE_ROOT=" + QFile::encodeName(QFileInfo(deviceRoot()).absoluteFilePath());
    const int error =
        m_program.isEmpty() ? ENOENT : m_child.start(m_program, {QStringLiteral("--child")}, root);
    if (!error) {
        Q_EMIT changed();
        return;
    }
    m_absence = m_program.isEmpty()
        ? notInstalled()
        : QString(m_program + QLatin1String(" cannot be started: ") + qt_error_string(error));
    m_again.startLater();
    Q_EMIT changed();
}

bool CastChild::admits(const ServiceClient &client) const
{
    return m_child.pid() != 0 && client.pid == m_child.pid();
}

void CastChild::onEnded(const QString &how)
{
    m_absence = QLatin1String("ozcast does not run: ") + how;
    qCWarning(logServices).noquote() << m_program + QLatin1String(": ") + how;
    if (m_isUsed) {
        m_again.reset();
        return start();
    }
    m_again.startLater();
    Q_EMIT changed();
}

CastOfSeat::CastOfSeat(std::shared_ptr<SystemBus> bus) : m_seat(std::move(bus))
{
    connect(&m_seat, &SeatUser::changed, this, &CastOrigin::changed);
}

bool CastOfSeat::admits(const ServiceClient &client) const
{
    return client.uid == ::getuid() || client.uid == m_seat.user();
}

QString CastOfSeat::absence() const
{
    const QString reason = QStringLiteral("nobody's screen can be cast: no session has started ozcast");
    return m_seat.absence().isEmpty() ? reason : QString(reason + QLatin1String("; ") + m_seat.absence());
}

} // namespace oz::services
