#include "Agent.hpp"

#include "Log.hpp"
#include "Probe.hpp"

#include <oz/DeviceRoot.hpp>

#include <QJsonArray>

#include <algorithm>

namespace oz::cast {

namespace {

using namespace std::chrono_literals;

const QString SocketPath = QStringLiteral("/dev/cast");
const QString CastId = QStringLiteral("id");
constexpr int ProtocolVersion = 1;
constexpr qsizetype MaxTargets = 256;

} // namespace

Agent::Agent(Life life, const CastOrder &fallback, const Elements &elements)
    : m_life(life), m_fallback(fallback), m_elements(elements), m_watch(fallback.picture), m_path(SocketPath),
      m_pause(250ms, 8s)
{
    m_again.setSingleShot(true);
    m_again.callOnTimeout(this, &Agent::connectToDaemon);
    connect(&m_path, &DevicePathWatcher::changed, this, [this] {
        if (m_again.isActive())
            connectToDaemon();
    });
    connect(&m_watch, &ScreenWatch::changed, this, &Agent::onScreen);
}

Agent::~Agent() = default;

void Agent::stop()
{
    if (m_status >= 0)
        return;
    m_status = 0;
    m_again.stop();
    if (m_cast)
        m_cast->end();
    else
        Q_EMIT finished(m_status);
}

void Agent::connectToDaemon()
{
    if (m_daemon || m_connecting || m_cast || m_status >= 0)
        return;
    m_again.stop();
    m_connecting = std::make_unique<QLocalSocket>();
    connect(
        m_connecting.get(), &QLocalSocket::connected, this, [this] { onConnected(m_connecting.release()); });
    connect(m_connecting.get(), &QLocalSocket::errorOccurred, this, [this] {
        QLocalSocket *socket = m_connecting.release();
        socket->disconnect(this);
        socket->deleteLater();
        if (m_life == Life::OfConnection) {
            qCWarning(logCast).noquote()
                << "no daemon serves" << devicePath(SocketPath) + QLatin1String(": ") + socket->errorString();
            m_status = 1;
            Q_EMIT finished(m_status);
            return;
        }
        retry();
    });
    m_connecting->connectToServer(devicePath(SocketPath));
}

void Agent::onConnected(QLocalSocket *socket)
{
    socket->disconnect(this);
    m_daemon = std::make_unique<LineChannel>(socket);
    connect(m_daemon.get(), &LineChannel::received, this, &Agent::onMessage);
    connect(m_daemon.get(), &LineChannel::closed, this, &Agent::onClosed);
    qCInfo(logCast).noquote() << "connected with" << devicePath(SocketPath);
    m_hello = {};
    sayHello();
}

void Agent::onClosed(const QString &reason)
{
    qCInfo(logCast).noquote() << "the daemon is gone:" << reason;
    m_daemon.release()->deleteLater(); // it is the sender
    if (m_life == Life::OfConnection)
        stop();
    else if (m_cast)
        m_cast->end();
    else
        retry();
}

void Agent::onMessage(const QString &kind, const QJsonObject &content)
{
    const bool isOurs = m_cast && content[CastId].toInt() == m_cast->id();
    if (kind == u"cast")
        cast(content);
    else if (kind == u"probe")
        probe(content);
    else if (kind == u"refused")
        qCWarning(logCast).noquote() << "the daemon refuses:" << content[QStringLiteral("text")].toString();
    else if (kind != u"pause" && kind != u"resume" && kind != u"end")
        qCWarning(logCast).noquote() << "ignoring an unknown message of the daemon:" << kind;
    else if (!isOurs)
        qCInfo(logCast).noquote() << "ignoring" << kind << "of a cast that is over";
    else if (kind == u"end")
        m_cast->end();
    else
        m_cast->send(kind);
    if (m_daemon && kind != u"refused")
        m_pause.reset();
}

void Agent::cast(const QJsonObject &content)
{
    CastOrder order = CastOrder::fromJson(content, m_fallback);
    order.videoEncoder = m_elements.videoName();
    order.audioEncoder = m_elements.audioName();
    QString problem = order.problem();
    if (m_cast)
        problem = QStringLiteral("another cast is running");
    else if (!m_elements.missing.isEmpty())
        problem = QLatin1String("not installed: ") + m_elements.missing;
    if (!problem.isEmpty())
        return tellEnd(order.id, {CastEnd::Failed, problem});
    qCInfo(logCast).noquote() << "casting to" << order.display.toString();
    m_cast = std::make_unique<CastProcess>(order);
    connect(m_cast.get(), &CastProcess::told, this, &Agent::tell);
    connect(m_cast.get(), &CastProcess::ended, this, &Agent::onCastEnded);
}

void Agent::probe(const QJsonObject &content)
{
    QList<Probe::Target> targets;
    for (const QJsonValue target : content[QStringLiteral("targets")].toArray()) {
        const QHostAddress address(target[QStringLiteral("address")].toString());
        const int port = target[QStringLiteral("port")].toInt();
        if (!address.isNull() && port > 0 && port <= 0xffff && targets.size() < MaxTargets)
            targets.append({address, quint16(port)});
    }
    const std::chrono::milliseconds limit(std::max(1, content[QStringLiteral("limit-ms")].toInt(1500)));
    auto *probe = new Probe(targets, limit, this);
    connect(probe, &Probe::done, this, [this, id = content[CastId]](const QList<QHostAddress> &accepting) {
        QJsonArray addresses;
        for (const QHostAddress &address : accepting)
            addresses.append(address.toString());
        tell(QStringLiteral("probed"), {{CastId, id}, {QStringLiteral("accepting"), addresses}});
    });
}

void Agent::onScreen()
{
    if (m_daemon)
        sayHello();
    else if (!m_again.isActive())
        connectToDaemon();
}

void Agent::sayHello()
{
    const Screen &screen = m_watch.screen();
    const QJsonObject hello{{QStringLiteral("version"), ProtocolVersion},
        {QStringLiteral("capture"), screen.capture}, {QStringLiteral("capture-remark"), screen.remark},
        {QStringLiteral("encoder"), m_elements.videoName()},
        {QStringLiteral("audio"), m_elements.audioName()}, {QStringLiteral("missing"), m_elements.missing}};
    if (hello != m_hello)
        tell(QStringLiteral("hello"), m_hello = hello);
}

void Agent::tellEnd(int id, const CastEnd &end)
{
    tell(QStringLiteral("ended"), end.toJson(id));
}

void Agent::onCastEnded(const CastEnd &end)
{
    qCInfo(logCast).noquote() << "the cast has ended:" << end.text;
    const int id = m_cast->id();
    m_cast.release()->deleteLater(); // it is the sender
    tellEnd(id, end);
    if (m_status >= 0)
        Q_EMIT finished(m_status);
    else if (!m_daemon)
        retry();
}

void Agent::tell(const QString &kind, const QJsonObject &content)
{
    if (m_daemon)
        m_daemon->send(kind, content);
}

void Agent::retry()
{
    m_again.start(m_pause.next());
}

} // namespace oz::cast
