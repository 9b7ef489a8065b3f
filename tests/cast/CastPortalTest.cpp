// What ozcast shows of a desktop that gives its screen through a portal, with a stand-in for the portal and
// the real PipeWire.

#include "cast/CastRig.hpp"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace oz::harness {

/*! A stream in the answer of a portal. */
struct PortalStream
{
    uint node = 0;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const PortalStream &stream)
{
    argument.beginStructure();
    argument << stream.node << stream.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalStream &stream)
{
    argument.beginStructure();
    argument >> stream.node >> stream.properties;
    argument.endStructure();
    return argument;
}

} // namespace oz::harness

Q_DECLARE_METATYPE(oz::harness::PortalStream)

using namespace oz::harness;

namespace {

const QString Path = QStringLiteral("/org/freedesktop/portal/desktop");

/*! A desktop portal, whose person answers as a test wants. */
class Portal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.ScreenCast")
    Q_PROPERTY(uint AvailableSourceTypes READ sourceTypes)
    Q_PROPERTY(uint AvailableCursorModes READ cursorModes)
    Q_PROPERTY(uint version READ version)

public:
    [[nodiscard]] static uint sourceTypes() { return 3; }
    [[nodiscard]] static uint cursorModes() { return 3; }
    [[nodiscard]] static uint version() { return 4; }

    void close()
    {
        QDBusConnection(bus).send(
            QDBusMessage::createSignal(session, "org.freedesktop.portal.Session", "Closed"));
    }

    QString bus;
    uint answer = 0;
    uint node = 0;
    QString pipeWire; // its socket
    QString session;
    QVariantMap sources; // that were selected

public Q_SLOTS:
    QDBusObjectPath CreateSession(const QVariantMap &options)
    {
        session = pathOf("session", options["session_handle_token"].toString());
        return respond(options, 0, {{"session_handle", session}});
    }
    QDBusObjectPath SelectSources(const QDBusObjectPath &, const QVariantMap &options)
    {
        sources = options;
        return respond(options, 0, {});
    }
    QDBusObjectPath Start(const QDBusObjectPath &, const QString &, const QVariantMap &options)
    {
        const QList<PortalStream> streams{{node, {}}};
        if (answer != 0)
            return respond(options, answer, {});
        return respond(options, 0,
            {{"streams", QVariant::fromValue(streams)}, {"restore_token", "token of " + session}});
    }
    QDBusUnixFileDescriptor OpenPipeWireRemote(const QDBusObjectPath &, const QVariantMap &) const
    {
        const int remote = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{AF_UNIX, {}};
        qstrncpy(address.sun_path, qPrintable(pipeWire), sizeof address.sun_path);
        EXPECT_EQ(::connect(remote, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        const QDBusUnixFileDescriptor descriptor(remote);
        ::close(remote);
        return descriptor;
    }

private:
    [[nodiscard]] QString pathOf(const QString &kind, const QString &token) const
    {
        return Path + '/' + kind + '/' + message().service().mid(1).replace('.', '_') + '/' + token;
    }
    QDBusObjectPath respond(const QVariantMap &options, uint code, const QVariantMap &results)
    {
        const QString path = pathOf("request", options["handle_token"].toString());
        QDBusMessage response = QDBusMessage::createTargetedSignal(
            message().service(), path, "org.freedesktop.portal.Request", "Response");
        response << code << results;
        connection().send(response);
        return QDBusObjectPath(path);
    }
};

class CastPortalTest : public CastTest
{
protected:
    CastPortalTest()
    {
        qDBusRegisterMetaType<PortalStream>();
        qDBusRegisterMetaType<QList<PortalStream>>();
        busDaemon.run("dbus-daemon", {"--session", "--print-address", "--nofork"});
        address = busDaemon.line();
        portal.bus = "portal";
        QDBusConnection bus = QDBusConnection::connectToBus(address, portal.bus);
        EXPECT_TRUE(bus.registerObject(
            Path, &portal, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties));
        EXPECT_TRUE(bus.registerService("org.freedesktop.portal.Desktop"));
        session = {{"XDG_RUNTIME_DIR", folder.path()}, {"XDG_STATE_HOME", folder.path()},
            {"DBUS_SESSION_BUS_ADDRESS", address}};
    }
    ~CastPortalTest() override { QDBusConnection::disconnectFromBus(portal.bus); }

    void run(Process *process, const QString &program, const QStringList &words = {}) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto &[name, value] : session)
            environment.insert(name, value);
        process->run(program, words, environment);
    }

    // Puts a white screen into PipeWire.
    void shareScreen()
    {
        portal.pipeWire = folder.filePath("pipewire-0");
        run(&pipeWire, "pipewire");
        pipeWire.await([this] { return QFileInfo::exists(portal.pipeWire); });
        run(&manager, "wireplumber");
        run(&screen, "gst-launch-1.0",
            {"-q", "videotestsrc", "is-live=true", "pattern=white", "!",
                "video/x-raw,format=BGRx,width=1280,height=720,framerate=10/1", "!", "pipewiresink",
                "mode=provide", "stream-properties=p,media.class=Video/Source,node.name=the-screen"});
        screen.await([this] { return (portal.node = nodeOfScreen()) != 0; });
    }
    [[nodiscard]] uint nodeOfScreen() const
    {
        Process dump;
        run(&dump, "pw-dump");
        dump.awaitEnd();
        const QJsonArray objects = QJsonDocument::fromJson(dump.readAllStandardOutput()).array();
        for (const QJsonValue object : objects) {
            if (object["info"]["props"]["node.name"] == "the-screen")
                return uint(object["id"].toInt());
        }
        return 0;
    }

    QTemporaryDir folder;
    Process busDaemon, pipeWire, manager, screen;
    QString address;
    Portal portal;
    Session session;
};

TEST_F(CastPortalTest, TheScreenIsCastWhereThePersonAllowsIt)
{
    shareScreen();
    startAgent({}, session);
    const QJsonObject hello = daemon.next("hello");
    EXPECT_EQ(hello["capture"], "portal");
    EXPECT_EQ(hello["capture-remark"],
        "the desktop portal, which asks the person in front of the screen; DISPLAY names no X server; no "
        "Wayland "
        "compositor is reachable");
    for (int id = 1; id <= 2; ++id) {
        daemon.send("cast", order(id));
        const QJsonObject step = daemon.next("step");
        EXPECT_EQ(step["text"], "waiting for the person in front of the screen to allow it");
        EXPECT_EQ(step["limit-ms"], 60'000 + stepLimit);
        play();
        EXPECT_EQ(portal.sources["types"], 1);
        EXPECT_EQ(portal.sources["cursor_mode"], 2);
        EXPECT_EQ(portal.sources["restore_token"].toString().isEmpty(), id == 1)
            << "the person is asked once";
        if (id == 1) {
            EXPECT_EQ(numbersReceived().back(), 0xffffU);
            daemon.send("end", {{"id", id}});
            EXPECT_EQ(end(), "asked: the cast was ended");
        }
    }
    portal.close();
    EXPECT_EQ(end(), "failed: the picture cannot be sent: the desktop shares its screen no longer");
}

TEST_F(CastPortalTest, WithoutPermissionNothingIsSent)
{
    startAgent({}, session);
    const std::map<uint, QString> rows{{1, "the person in front of the screen does not allow it"},
        {2, "the desktop portal has ended the request"}};
    for (const auto &[answer, reason] : rows) {
        portal.answer = answer;
        cast();
        EXPECT_EQ(end(), "failed: there is no screen to cast: " + reason);
    }
    EXPECT_EQ(sink.heard(), QStringList());
    EXPECT_TRUE(QDBusConnection(portal.bus).unregisterService("org.freedesktop.portal.Desktop"));
    cast();
    EXPECT_EQ(end(),
        "failed: there is no screen to cast: DISPLAY names no X server; no Wayland compositor is reachable; "
        "no desktop "
        "portal shares screens");
}

TEST_F(CastTest, ASilentSessionBusHoldsUpNoEnd)
{
    QTemporaryDir folder;
    QLocalServer bus;
    ASSERT_TRUE(bus.listen(folder.filePath("bus")));
    startAgent({}, {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + bus.fullServerName()}});
    EXPECT_EQ(daemon.next("hello")["capture-remark"], "the screen's server does not answer");
    agent.terminate();
    agent.awaitEnd();
    EXPECT_EQ(agent.exitCode(), 0);
}

} // namespace

#include "CastPortalTest.moc"
