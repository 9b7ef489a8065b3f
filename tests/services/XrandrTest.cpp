#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/DisplayInfo.hpp>

#include <QProcess>
#include <QProcessEnvironment>

#include <unistd.h>

// The displays of real X servers, as an application sees them while xrandr changes them.

using namespace oz;
using namespace oz::device;
using namespace oz::testing;

namespace {

class XrandrTest : public DeviceTest
{
protected:
    // Starts an X server and gives what DISPLAY calls it.
    QString start(
        QProcess *server, const QString &program, QStringList arguments, const QString &display = {})
    {
        arguments << "-displayfd"
                  << "1"
                  << "-nolisten"
                  << "tcp";
        startOn(display, server, program, arguments);
        EXPECT_TRUE(waitUntil([&] {
            server->waitForReadyRead(1);
            return server->canReadLine() || server->state() == QProcess::NotRunning;
        })) << program.toStdString();
        const QByteArray number = server->readLine().trimmed();
        EXPECT_FALSE(number.isEmpty())
            << program.toStdString()
            << " (./oz setup installs it): " << server->readAllStandardError().toStdString();
        return ':' + number;
    }

    void startDaemon(const QString &display)
    {
        startOn(display, &daemon, OZ_DAEMON, {"--config", "/dev/null", "--displays", "xrandr"});
        PpsObject control("/pps/system/ozdeviced/control");
        ASSERT_TRUE(waitUntil([&] { return control.open(PpsOpenMode::Publish); }));
    }

    void xrandr(const QString &display, const QString &arguments)
    {
        QProcess xrandr;
        startOn(display, &xrandr, "xrandr", arguments.split(' '));
        ASSERT_TRUE(xrandr.waitForFinished()) << xrandr.errorString().toStdString();
        ASSERT_EQ(xrandr.exitCode(), 0) << xrandr.readAllStandardError().toStdString();
    }

    ~XrandrTest() override
    {
        for (QProcess *process : {&daemon, &inner, &outer}) {
            process->terminate();
            process->waitForFinished();
        }
    }

    QProcess outer;
    QProcess inner;
    QProcess daemon;

private:
    static void startOn(
        const QString &display, QProcess *process, const QString &program, const QStringList &arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", display);
        process->setProcessEnvironment(environment);
        process->start(program, arguments);
        EXPECT_TRUE(process->waitForStarted()) << program.toStdString() << " is not installed (./oz setup)";
    }
};

TEST_F(XrandrTest, AServerThatIsResizedAndTurnedIsADisplayThatIs)
{
    const QString host = start(&outer, "Xvfb", {"-screen", "0", "1600x1200x24"});
    const QString display = start(&inner, "Xephyr", {"-screen", "800x600", "-resizeable"}, host);
    startDaemon(display);
    DisplayInfo info(0);
    SignalLog signalled(&info);
    EXPECT_EQ(info.pixelSize(), QSize(800, 600));
    EXPECT_EQ(info.displayName(), "default");
    EXPECT_TRUE(info.isAttached() && info.isDetachable() && !info.isWireless());
    xrandr(display, "-s 1024x768");
    EXPECT_EQ(signalled.waitFor(2), R"(pixelSize(1024x768) pixelSize({"height":768,"width":1024}))");
    xrandr(display, "-o left");
    EXPECT_EQ(signalled.waitFor(2), R"(pixelSize(768x1024) pixelSize({"height":1024,"width":768}))");
    EXPECT_EQ(info.aspectType(), DisplayAspectType::Portrait);
    inner.kill();
    EXPECT_EQ(signalled.waitFor(1), "attached(false)");
    daemon.terminate();
    daemon.waitForFinished();
    EXPECT_TRUE(
        daemon.readAllStandardError().contains("is gone; its displays are detached until it is back"));
}

TEST_F(XrandrTest, OutputsThatComeAndGoAreAttachedAndDetached)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "Xorg takes a configuration file from root alone";
    root.place("/dummy.conf",
        "Section \"Device\"\n Identifier \"d\"\n Driver \"dummy\"\n VideoRam 256000\nEndSection\n"
        "Section \"Screen\"\n Identifier \"s\"\n Device \"d\"\n SubSection \"Display\"\n"
        " Modes \"1280x720\" \"1024x768\" \"800x600\"\n Virtual 3840 2160\n EndSubSection\nEndSection\n");
    const QString display = start(&outer, "Xorg",
        {"-config", root.file("/dummy.conf"), "-noreset", "-logfile", root.file("/Xorg.log")});
    xrandr(display, "--addmode DUMMY1 1024x768");
    xrandr(display, "--addmode DUMMY1 800x600");
    startDaemon(display);
    DisplayInfo first(0);
    DisplayInfo second(1);
    SignalLog firstSignalled(&first);
    SignalLog signalled(&second);
    EXPECT_EQ(first.displayName(), "DUMMY0");
    EXPECT_EQ(second.displayName(), "DUMMY1");
    EXPECT_FALSE(second.isAttached());
    xrandr(display, "--output DUMMY1 --mode 1024x768 --right-of DUMMY0");
    EXPECT_EQ(signalled.waitFor(1), "attached(true)");
    EXPECT_EQ(second.pixelSize(), QSize(1024, 768));
    xrandr(display, "--output DUMMY1 --mode 800x600");
    EXPECT_EQ(signalled.waitFor(2), R"(pixelSize(800x600) pixelSize({"height":600,"width":800}))");
    xrandr(display, "--output DUMMY1 --off");
    EXPECT_EQ(signalled.waitFor(1), "attached(false)");
    EXPECT_EQ(firstSignalled.settled(), "");
}

TEST_F(XrandrTest, WithoutAServerTheSimulatedDisplaysStay)
{
    startDaemon(":4242");
    EXPECT_EQ(DisplayInfo(0).displayName(), "panel");
    daemon.terminate();
    ASSERT_TRUE(daemon.waitForFinished());
    EXPECT_TRUE(daemon.readAllStandardError().contains(
        "display: no X server is reachable at DISPLAY=:4242; the simulated phone feeds it instead\n"));
}

} // namespace
