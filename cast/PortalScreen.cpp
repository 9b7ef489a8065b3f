#include "PortalScreen.hpp"

#include "Elements.hpp"
#include "PortalSession.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <fcntl.h>

namespace oz::cast {

namespace {

constexpr std::chrono::seconds ConsentLimit{60};
constexpr QSize UsualSize(1280, 720); // where the portal does not tell the screen's

// What the portal knows an earlier permission by.
QString tokenPath()
{
    const QString folder = qEnvironmentVariable("XDG_STATE_HOME");
    return (folder.isEmpty() ? QDir::homePath() + QLatin1String("/.local/state") : folder)
        + QLatin1String("/ozcast/screen-token");
}

QString readToken()
{
    QFile file(tokenPath());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

// Without it the person is asked anew, which is no reason to fail.
void writeToken(const QString &token)
{
    QDir().mkpath(QFileInfo(tokenPath()).path());
    QSaveFile file(tokenPath());
    if (file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        && file.write(token.toUtf8()) == token.toUtf8().size())
        file.commit();
}

bool openSession(Screen *screen)
{
    auto session = std::make_shared<PortalSession>(PortalSession::connectToBus());
    QString token = readToken();
    const auto stream = session->open(&token, ConsentLimit);
    if (!stream) {
        screen->remark = session->problem();
        return false;
    }
    writeToken(token);
    // The signal of its end needs a thread that goes on.
    session->moveToThread(QCoreApplication::instance()->thread());
    const int remote = ::fcntl(stream->remote.fileDescriptor(), F_DUPFD_CLOEXEC, 0); // the element closes it
    // A screen that stands still sends nothing.
    screen->source = QStringLiteral("pipewiresrc name=screen fd=%1 path=%2 do-timestamp=true "
                                    "keepalive-time=200 ! videorate")
                         .arg(QString::number(remote), QString::number(stream->node));
    screen->size = stream->size.isEmpty() ? UsualSize : stream->size;
    screen->feed = [session](GstElement *pipeline, const VideoMode &) {
        QObject::connect(session.get(), &PortalSession::closed, session.get(),
            [pipeline] { endPictures(pipeline, "the desktop shares its screen no longer"); });
    };
    return true;
}

} // namespace

bool findPortalScreen(Screen *screen)
{
    const QDBusConnection bus = PortalSession::connectToBus();
    const auto sources = PortalSession::property(bus, QStringLiteral("AvailableSourceTypes"));
    QDBusConnection::disconnectFromBus(bus.name());
    if (!sources) {
        screen->remark = bus.isConnected() ? QStringLiteral("no desktop portal shares screens")
                                           : QStringLiteral("there is no session bus with a desktop portal");
        return false;
    }
    if (!(*sources & PortalSession::Monitor)) {
        screen->remark = QStringLiteral("the desktop portal shares no whole screens");
        return false;
    }
    if (!isInstalled("pipewiresrc")) {
        screen->remark =
            QStringLiteral("the desktop portal cannot be used without pipewiresrc (Debian package "
                           "gstreamer1.0-pipewire)");
        return false;
    }
    screen->capture = QStringLiteral("portal");
    screen->remark = QStringLiteral("the desktop portal, which asks the person in front of the screen");
    screen->open = openSession;
    screen->openLimit = ConsentLimit;
    screen->awaited = QStringLiteral("waiting for the person in front of the screen to allow it");
    return true;
}

} // namespace oz::cast
