#include "miracast/CastProcess.hpp"

#include "publishing/Log.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsServer.hpp>

#include <QFile>
#include <QJsonArray>

#include <chrono>
#include <utility>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

const QString CastDevice = QStringLiteral("/dev/cast");
constexpr qsizetype MostUnread = 4 * MaxCastLine;
constexpr int CastVersion = 1;
constexpr auto ProbeLimit = 1500ms;
constexpr auto ProbeDelay = 1000ms; // until an answer counts as missing
constexpr auto RefusalTime = 1s;
constexpr auto FirstListenPause = 250ms;
constexpr auto LongestListenPause = 10s;

// In a tree of the system, where only root may write into /dev, a link that root has made leads to the place.
QString placeOfDevice()
{
    const QString link = deviceRoot().isEmpty() ? QFile::symLinkTarget(CastDevice) : QString();
    return link.isEmpty() ? CastDevice : link;
}

QString idName()
{
    return QStringLiteral("id");
}

} // namespace

CastProcess::CastProcess(std::unique_ptr<CastOrigin> origin)
    : m_origin(std::move(origin)), m_device(placeOfDevice()),
      m_listenAgain(FirstListenPause, LongestListenPause)
{
    m_device.keepEveryLine(MaxCastLine, MostUnread);
    connect(&m_device, &DeviceServer::connected, this, &CastProcess::onConnected);
    connect(&m_device, &DeviceServer::received, this, &CastProcess::onReceived);
    connect(&m_device, &DeviceServer::disconnected, this, &CastProcess::onDisconnected);
    connect(m_origin.get(), &CastOrigin::changed, this, &CastProcess::onOriginChanged);
    m_listenAgain.callOnTimeout(this, &CastProcess::listen);
    // Later, when the one of a former configuration has given the device up.
    QMetaObject::invokeMethod(this, &CastProcess::listen, Qt::QueuedConnection);
}

void CastProcess::listen()
{
    if (m_device.listen(0666)) {
        m_problem.clear();
        m_warn({});
        m_origin->start();
    } else {
        m_problem = CastDevice + QLatin1String(" cannot be served: ") + m_device.errorString();
        m_warn(m_problem);
        m_listenAgain.startLater();
    }
    Q_EMIT changed();
}

QString CastProcess::absence() const
{
    if (!m_problem.isEmpty())
        return m_problem;
    return m_client.id ? QStringLiteral("ozcast has not told yet what it can do") : m_origin->absence();
}

bool CastProcess::isExpected() const
{
    return m_problem.isEmpty() && (!m_device.isListening() || m_client.id || m_origin->isExpected());
}

void CastProcess::onConnected(const DeviceServer::Client &client)
{
    if (!m_origin->admits(client)) {
        PpsServer::warnAbout(
            client, QStringLiteral("is refused at /dev/cast, where another ozcast is expected"));
        return refuse(client, QStringLiteral("this ozcast is not of the session that is cast"));
    }
    if (m_client.id)
        return refuse(client, QStringLiteral("another ozcast is connected"));
    m_client = client;
    m_device.hold(client.id);
    m_problem.clear();
    Q_EMIT changed();
}

void CastProcess::refuse(const DeviceServer::Client &client, const QString &why)
{
    m_device.send(client.id, CastLines::write(QStringLiteral("refused"), {{QStringLiteral("text"), why}}));
    // It reads that first, unless it takes its time.
    QTimer::singleShot(RefusalTime, &m_device, [this, id = client.id] { m_device.disconnectClient(id); });
}

void CastProcess::onReceived(const DeviceServer::Client &client, const QByteArray &line)
{
    if (client.id != m_client.id)
        return;
    QString problem;
    const auto read = CastLines::read(line, &problem);
    if (!read)
        violate(problem);
    else if (!m_hello && !std::holds_alternative<CastLines::Hello>(*read))
        violate(QStringLiteral("it does not begin with what it can do"));
    else
        take(*read);
}

void CastProcess::take(const CastLines::Line &line)
{
    if (const auto *hello = std::get_if<CastLines::Hello>(&line))
        takeHello(*hello);
    else if (const auto *probed = std::get_if<CastLines::Probed>(&line))
        finishProbe(probed->id, probed->accepting);
    else if (const auto *step = std::get_if<CastLines::Step>(&line))
        Q_EMIT stepped(*step);
    else if (const auto *play = std::get_if<CastLines::Playing>(&line))
        Q_EMIT playing(*play);
    else if (const auto *pause = std::get_if<CastLines::Paused>(&line))
        Q_EMIT paused(*pause);
    else if (const auto *end = std::get_if<CastLines::Ended>(&line))
        Q_EMIT ended(*end);
    else // of a later version
        PpsServer::warnAbout(m_client, QStringLiteral("writes lines to /dev/cast that are ignored"));
}

void CastProcess::takeHello(const CastLines::Hello &hello)
{
    if (hello.version != CastVersion) {
        refuse(m_client, QStringLiteral("ozdeviced speaks version 1"));
        return violate(QLatin1String("it speaks version ") + QString::number(hello.version)
            + QLatin1String("; install ozcast and ozdeviced of one release"));
    }
    if (m_hello == hello)
        return;
    m_hello = hello;
    Q_EMIT changed();
}

void CastProcess::violate(const QString &what)
{
    m_problem = QLatin1String("ozcast is not understood: ") + what;
    PpsServer::warnAbout(m_client, QLatin1String("writes to /dev/cast what is not understood: ") + what);
    kill();
}

void CastProcess::kill()
{
    m_origin->kill();
    m_device.disconnectClient(m_client.id);
}

void CastProcess::onDisconnected(const DeviceServer::Client &client)
{
    if (client.id != m_client.id)
        return;
    m_client = {};
    m_hello.reset();
    // One that has closed its connection is of no more use.
    m_origin->kill();
    const std::map<int, Probed> probes = std::exchange(m_probes, {});
    for (const auto &[id, probed] : probes)
        probed(std::nullopt);
    Q_EMIT terminated();
    Q_EMIT changed();
}

void CastProcess::onOriginChanged()
{
    if (m_client.id && !m_origin->admits(m_client)) // its user's session is not the active one any more
        m_device.disconnectClient(m_client.id);
    else
        Q_EMIT changed();
}

void CastProcess::probe(const QList<Target> &targets, const Probed &probed)
{
    const int id = ++m_lastId;
    QJsonArray list;
    for (const Target &target : targets) {
        list.append(
            QJsonObject{{QStringLiteral("address"), target.address}, {QStringLiteral("port"), target.port}});
    }
    m_probes.emplace(id, probed);
    QTimer::singleShot(ProbeLimit + ProbeDelay, this, [this, id] { finishProbe(id, std::nullopt); });
    if (!m_hello) {
        QMetaObject::invokeMethod(
            this, [this, id] { finishProbe(id, std::nullopt); }, Qt::QueuedConnection);
        return;
    }
    m_device.send(m_client.id,
        CastLines::write(QStringLiteral("probe"),
            {{idName(), id}, {QStringLiteral("targets"), list},
                {QStringLiteral("limit-ms"), int(ProbeLimit.count())}}));
}

void CastProcess::finishProbe(int id, const std::optional<QStringList> &accepting)
{
    if (const auto found = m_probes.find(id); found != m_probes.end()) {
        const Probed probed = found->second;
        m_probes.erase(found);
        probed(accepting);
    }
}

int CastProcess::cast(QJsonObject values)
{
    values.insert(idName(), ++m_lastId);
    m_origin->use();
    m_device.send(m_client.id, CastLines::write(QStringLiteral("cast"), values));
    return m_lastId;
}

void CastProcess::order(const QString &kind, int id)
{
    m_device.send(m_client.id, CastLines::write(kind, {{idName(), id}}));
}

} // namespace oz::services
