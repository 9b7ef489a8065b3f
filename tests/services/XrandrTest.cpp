#include "services/Services.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>

#include <QRegularExpression>

#include <csignal>
#include <unistd.h>

// The displays of real X servers, as an application sees them while xrandr changes them.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

class XrandrTest : public DeviceTest
{
protected:
    // Starts an X server and gives what DISPLAY calls it.
    static QString start(
        Process *server, const QString &program, const QStringList &arguments, const QString &display = {})
    {
        server->run(program, arguments + QStringList{"-displayfd", "1", "-nolisten", "tcp"}, on(display));
        return ':' + server->line();
    }

    void startDaemon(const QString &display)
    {
        daemon.setProcessEnvironment(on(display));
        daemon.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated", "--displays", "xrandr"});
        awaitDaemon(&daemon);
    }

    static void xrandr(const QString &display, const QString &arguments)
    {
        Process xrandr;
        xrandr.run("xrandr", arguments.split(' '), on(display));
        xrandr.awaitEnd();
        ASSERT_EQ(xrandr.exitCode(), 0) << xrandr.errors().toStdString();
    }

    ~XrandrTest() override
    {
        // A server that is killed leaves its lock and its socket.
        for (QProcess *process : std::initializer_list<QProcess *>{&daemon, &inner, &outer}) {
            process->terminate();
            if (process->state() != QProcess::NotRunning)
                process->waitForFinished();
        }
    }

    Process outer;
    Process inner;
    QProcess daemon;

private:
    static QProcessEnvironment on(const QString &display)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", display);
        environment.insert("OZ_GRACE_TIME", "1");
        return environment;
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
    EXPECT_EQ(
        daemonProblem("record", QVariantMap{{"facilities", QStringList{"display"}}, {"report", true}}), "");
    xrandr(display, "-s 1024x768");
    EXPECT_EQ(signalled.waitFor(2), R"(pixelSize(1024x768) pixelSize({"height":768,"width":1024}))");
    xrandr(display, "-o left");
    EXPECT_EQ(signalled.waitFor(2), R"(pixelSize(768x1024) pixelSize({"height":1024,"width":768}))");
    EXPECT_EQ(info.aspectType(), DisplayAspectType::Portrait);
    const QString steps = askDaemon("recorded").value("steps").toStringList().join(' ');
    EXPECT_TRUE(steps.contains(QRegularExpression("display resize 0 1024 768.*display rotate 0 90")))
        << "a recording tells what a real server does: " << steps.toStdString();
    inner.kill();
    EXPECT_EQ(signalled.waitFor(1), "attached(false)");
    QByteArray logged;
    EXPECT_TRUE(waitUntil([&] {
        logged += daemon.readAllStandardError();
        return logged.contains("display is absent: ");
    }));
    const QString all = askDaemon("recorded").value("steps").toStringList().join(' ');
    EXPECT_TRUE(all.contains(
        "\"say\":\"display: the source xrandr is absent: the X server " + display + " is gone\""))
        << "a report tells why: " << all.toStdString();
    daemon.terminate();
    daemon.waitForFinished();
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

TEST_F(XrandrTest, WithoutAServerThereAreNoDisplaysAndNobodyInventsAny)
{
    startDaemon(":4242");
    DisplayInfo info(0);
    EXPECT_FALSE(info.isAttached());
    EXPECT_EQ(log.take(), QStringList{"DisplayInfo: 0 is not a valid display id"});
    const QVariantMap display =
        attributesOf("/pps/system/ozdeviced/status").value("facilities").toMap()["display"].toMap();
    EXPECT_EQ(display.value("state"), "absent");
    EXPECT_EQ(display.value("reason"), "no X server is reachable at DISPLAY=:4242");
}

TEST_F(XrandrTest, AServerThatIsStoppedHoldsUpNobodyAndIsFollowedAgain)
{
    const QString display = start(&outer, "Xvfb", {"-screen", "0", "640x480x24"});
    ::kill(pid_t(outer.processId()), SIGSTOP);
    startDaemon(display);
    EXPECT_EQ(SdCardInfo().state(), SdCardState::Mounted);
    sim("sdcard unmount");
    EXPECT_EQ(SdCardInfo().state(), SdCardState::Unmounted);
    const auto reason = [] {
        const QVariantMap facilities =
            attributesOf("/pps/system/ozdeviced/status").value("facilities").toMap();
        return facilities["display"].toMap().value("reason");
    };
    EXPECT_TRUE(waitUntil([&] { return reason() == "the X server " + display + " does not answer"; }));
    ::kill(pid_t(outer.processId()), SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return DisplayInfo(0).isAttached(); }));
    log.take(); // of each look before
}

TEST_F(XrandrTest, ASinkThatIsConnectedIsADisplayBesideThoseOfTheServer)
{
    startDaemon(start(&outer, "Xvfb", {"-screen", "0", "640x480x24"}));
    const MiracastManager manager;
    sim("clock speed 1000");
    EXPECT_EQ(ask("/pps/services/miracast/control", {{"msg", "x"}}).value("err"), EINVAL);
    PpsObject control("/pps/services/miracast/control");
    ASSERT_TRUE(control.open(PpsOpenMode::PublishSubscribe));
    const QString tv = "02:00:00:00:02:01";
    const auto sinks = [] { return attributesOf("/pps/services/miracast/sinks"); };
    EXPECT_TRUE(control.write("msg::miracast_sink_discover\nid::1\n"));
    ASSERT_TRUE(waitUntil([&] { return !sinks().isEmpty(); }));
    EXPECT_TRUE(control.write("msg::miracast_session_start\nid::2\ndat:json:{\"sink_mac\":\"" + tv.toUtf8()
        + "\",\"pin\":\"\"}\n"));
    ASSERT_TRUE(waitUntil([&] { return manager.connectionState() == MiracastConnectionState::Connected; }));
    EXPECT_EQ(DisplayInfo(0).pixelSize(), QSize(640, 480));
    DisplayInfo wireless(1);
    EXPECT_TRUE(wireless.isAttached() && wireless.isWireless());
    SignalLog signalled(&wireless);
    sim("miracast sink-goes tv");
    EXPECT_EQ(signalled.waitFor(1), "attached(false)");
}

} // namespace
