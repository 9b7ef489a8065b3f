#include "PortalSession.hpp"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QFileInfo>
#include <QTimer>
#include <QUuid>

#include <algorithm>

namespace oz::cast {

namespace {

const QString Service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString Path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString ScreenCast = QStringLiteral("org.freedesktop.portal.ScreenCast");
const QString RequestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString SessionInterface = QStringLiteral("org.freedesktop.portal.Session");

constexpr int AnswerLimit = 3000; // milliseconds for what asks nobody
// Values of the interface.
constexpr uint EmbeddedCursor = 2;
constexpr uint UntilRevoked = 2;
constexpr uint VersionWithTokens = 4;
constexpr uint Allowed = 0;
constexpr uint Cancelled = 1;

QString newToken()
{
    return QLatin1String("ozcast") + QUuid::createUuid().toString(QUuid::Id128);
}

QDBusMessage callOf(const QString &interface, const QString &method, const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(Service, Path, interface, method);
    call.setArguments(arguments);
    return call;
}

// The first of the streams: a(ua{sv}).
std::optional<PortalSession::Stream> firstOf(const QVariant &streams)
{
    const auto array = streams.value<QDBusArgument>();
    if (array.currentSignature() != u"a(ua{sv})")
        return std::nullopt;
    array.beginArray();
    if (array.atEnd())
        return std::nullopt;
    PortalSession::Stream stream;
    QVariantMap properties;
    array.beginStructure();
    array >> stream.node >> properties;
    array.endStructure();
    stream.size = qdbus_cast<QSize>(properties.value(QStringLiteral("size")));
    return stream;
}

} // namespace

QDBusConnection PortalSession::connectToBus()
{
    // Without an address the bus's library would start a bus.
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        && (folder.isEmpty() || !QFileInfo::exists(folder + QLatin1String("/bus"))))
        return QDBusConnection(QString());
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, newToken());
}

std::optional<uint> PortalSession::property(const QDBusConnection &bus, const QString &name)
{
    const QDBusReply<QVariant> reply = bus.call(
        callOf(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"), {ScreenCast, name}),
        QDBus::Block, AnswerLimit);
    return reply.isValid() ? std::optional(reply.value().toUInt()) : std::nullopt;
}

PortalSession::PortalSession(const QDBusConnection &bus) : m_bus(bus) { }

PortalSession::~PortalSession()
{
    QDBusConnection::disconnectFromBus(m_bus.name());
}

std::optional<PortalSession::Stream> PortalSession::open(QString *token, std::chrono::milliseconds limit)
{
    m_end = std::chrono::steady_clock::now() + limit;
    const auto created =
        request(QStringLiteral("CreateSession"), {}, {{QStringLiteral("session_handle_token"), newToken()}});
    if (!created)
        return std::nullopt;
    m_session = created->value(QStringLiteral("session_handle")).toString();
    m_bus.connect(Service, m_session, SessionInterface, QStringLiteral("Closed"), this, SIGNAL(closed()));

    QVariantMap sources{{QStringLiteral("types"), Monitor}, {QStringLiteral("multiple"), false}};
    if (property(m_bus, QStringLiteral("AvailableCursorModes")).value_or(0) & EmbeddedCursor)
        sources.insert(QStringLiteral("cursor_mode"), EmbeddedCursor);
    if (property(m_bus, QStringLiteral("version")).value_or(0) >= VersionWithTokens) {
        sources.insert(QStringLiteral("persist_mode"), UntilRevoked);
        if (!token->isEmpty())
            sources.insert(QStringLiteral("restore_token"), *token);
    }
    const QVariant session = QVariant::fromValue(QDBusObjectPath(m_session));
    if (!request(QStringLiteral("SelectSources"), {session}, sources))
        return std::nullopt;
    const auto started = request(QStringLiteral("Start"), {session, QString()}, {});
    if (!started)
        return std::nullopt;
    *token = started->value(QStringLiteral("restore_token")).toString();
    std::optional<Stream> stream = firstOf(started->value(QStringLiteral("streams")));
    if (!stream)
        return fail(QStringLiteral("the desktop portal gives no screen"));
    const QDBusReply<QDBusUnixFileDescriptor> remote =
        m_bus.call(callOf(ScreenCast, QStringLiteral("OpenPipeWireRemote"), {session, QVariantMap()}),
            QDBus::Block, AnswerLimit);
    if (!remote.isValid())
        return fail(
            QLatin1String("the desktop portal gives no way to PipeWire: ") + remote.error().message());
    stream->remote = remote.value();
    return stream;
}

// A request answers by a signal of an object of its own, whose path is known beforehand.
std::optional<QVariantMap> PortalSession::request(
    const QString &method, const QVariantList &arguments, QVariantMap options)
{
    const QString token = newToken();
    const QString path =
        Path + QLatin1String("/request/") + m_bus.baseService().mid(1).replace(u'.', u'_') + u'/' + token;
    options.insert(QStringLiteral("handle_token"), token);
    m_bus.connect(Service, path, RequestInterface, QStringLiteral("Response"), this,
        SLOT(onResponse(uint, QVariantMap)));
    m_code.reset();
    const QDBusMessage reply =
        m_bus.call(callOf(ScreenCast, method, QVariantList(arguments) << options), QDBus::Block, AnswerLimit);
    if (reply.type() == QDBusMessage::ErrorMessage)
        return fail(QLatin1String("the desktop portal refuses: ") + reply.errorMessage());
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now());
    QTimer::singleShot(std::max(left, std::chrono::milliseconds(0)), &m_loop, &QEventLoop::quit);
    if (!m_code)
        m_loop.exec();
    m_bus.disconnect(Service, path, RequestInterface, QStringLiteral("Response"), this,
        SLOT(onResponse(uint, QVariantMap)));
    if (!m_code)
        return fail(QStringLiteral("nobody has allowed it in time"));
    if (*m_code == Cancelled)
        return fail(QStringLiteral("the person in front of the screen does not allow it"));
    if (*m_code != Allowed)
        return fail(QStringLiteral("the desktop portal has ended the request"));
    return m_results;
}

void PortalSession::onResponse(uint code, const QVariantMap &results)
{
    m_code = code;
    m_results = results;
    m_loop.quit();
}

std::nullopt_t PortalSession::fail(const QString &problem)
{
    m_problem = problem;
    return std::nullopt;
}

} // namespace oz::cast
