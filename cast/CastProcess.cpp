#include "CastProcess.hpp"

#include "FurtherOutput.hpp"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <chrono>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace oz::cast {

namespace {

// The cast itself waits for the display for a shorter time.
constexpr std::chrono::milliseconds LongestEnd{1900};

} // namespace

CastProcess::CastProcess(const CastOrder &order) : m_id(order.id), m_picture(order.picture)
{
    connect(&m_process, &QProcess::finished, this, &CastProcess::conclude);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            conclude();
    });
    m_limit.setSingleShot(true);
    m_limit.setInterval(LongestEnd);
    m_limit.callOnTimeout(&m_process, &QProcess::kill);

    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0) {
        auto *socket = new QLocalSocket;
        socket->setSocketDescriptor(ends[0]);
        m_channel = std::make_unique<LineChannel>(socket);
        connect(m_channel.get(), &LineChannel::received, this, &CastProcess::onMessage);
        connect(m_channel.get(), &LineChannel::closed, this, [this] {
            m_isClosed = true;
            m_process.kill(); // where it is held up at its end
            conclude();
        });
        m_channel->send(QStringLiteral("cast"), order.toJson());
    }
    m_process.setChildProcessModifier([theirs = ends[1]] { ::fcntl(theirs, F_SETFD, 0); });
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.start(
        QCoreApplication::applicationFilePath(), {QStringLiteral("--worker"), QString::number(ends[1])});
    ::close(ends[1]);
}

CastProcess::~CastProcess()
{
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished();
}

void CastProcess::send(const QString &kind)
{
    if (m_channel)
        m_channel->send(kind, {});
}

void CastProcess::end()
{
    if (std::exchange(m_isAsked, true))
        return;
    m_limit.start();
    send(QStringLiteral("end"));
}

void CastProcess::onMessage(const QString &kind, const QJsonObject &content)
{
    if (m_end)
        return;
    if (kind != u"ended") {
        Q_EMIT told(kind, content);
        return;
    }
    m_end = CastEnd::fromJson(content);
    m_process.kill();
}

// Its last words may come after its end.
void CastProcess::conclude()
{
    if (m_process.state() != QProcess::NotRunning || (m_channel && !m_isClosed))
        return;
    if (!m_end && m_isAsked)
        m_end = CastEnd{CastEnd::Asked, QStringLiteral("the cast was ended; its process had to be killed")};
    if (!m_end) {
        m_end = CastEnd{CastEnd::Failed,
            QLatin1String("the process of the cast ended unexpectedly: ")
                + (m_process.error() == QProcess::FailedToStart ? m_process.errorString()
                        : m_process.exitStatus() == QProcess::CrashExit
                        ? QLatin1String("signal ") + QString::number(m_process.exitCode())
                        : QLatin1String("status ") + QString::number(m_process.exitCode()))};
    }
    if (m_picture == Picture::OfFurtherOutput)
        removeFurtherOutput();
    Q_EMIT ended(*m_end);
}

} // namespace oz::cast
