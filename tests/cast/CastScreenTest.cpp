// What ozcast shows of an X server and of a Wayland compositor, and what becomes of a cast when they
// misbehave.

#include "cast/CastRig.hpp"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <unistd.h>
#include <xcb/xcb.h>

using namespace oz::harness;

namespace {

class CastScreenTest : public CastTest
{
protected:
    CastScreenTest() { startServer(&server); }
    ~CastScreenTest() override
    {
        // A server that is killed leaves its lock and its socket.
        server.stall(false);
        server.terminate();
        server.waitForFinished();
    }

    void startServer(Process *process) const
    {
        process->run("Xvfb",
            {display, "-screen", "0", "1280x720x24", "-displayfd", "1", "-noreset", "-nolisten", "tcp"});
        process->line(); // it is ready
    }

    // Paints the bits of \a number as black and white cells over the whole screen.
    void paint(unsigned number) const
    {
        xcb_connection_t *connection = xcb_connect(qPrintable(display), nullptr);
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        const xcb_gcontext_t context = xcb_generate_id(connection);
        xcb_create_gc(connection, context, screen->root, 0, nullptr);
        for (int cell = 0; cell < Cells::Side * Cells::Side; ++cell) {
            const uint32_t colour = number >> cell & 1 ? screen->white_pixel : screen->black_pixel;
            xcb_change_gc(connection, context, XCB_GC_FOREGROUND, &colour);
            const xcb_rectangle_t place{int16_t(cell % Cells::Side * Cells::Width / Cells::Side),
                int16_t(cell / Cells::Side * Cells::Height / Cells::Side), Cells::Width / Cells::Side,
                Cells::Height / Cells::Side};
            xcb_poly_fill_rectangle(connection, screen->root, context, 1, &place);
        }
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        xcb_disconnect(connection);
    }

    Process server;
    // Another test, or a compositor, may take one that nobody has for a moment if it is among the first.
    const QString display = ':' + QString::number(1000 + ::getpid() % 30'000);
};

TEST_F(CastScreenTest, WhatIsPaintedOnTheScreenArrivesAtTheDisplay)
{
    paint(0xb5c3);
    startAgent({}, {{"DISPLAY", display}});
    const QJsonObject hello = daemon.next("hello");
    EXPECT_EQ(hello["capture"], "x11");
    EXPECT_EQ(
        hello["capture-remark"].toString(), "the X server at DISPLAY=" + display + ", which comes first");
    cast();
    play();
    const auto awaitPackets = [this] {
        const qsizetype before = sink.packets();
        ASSERT_TRUE(waitUntil([&] { return sink.packets() > before + 15; }));
    };
    awaitPackets();
    paint(0x4a3d);
    awaitPackets();
    daemon.send("end", {{"id", 1}});
    EXPECT_EQ(end(), "asked: the cast was ended");
    const std::vector<unsigned> numbers = numbersReceived();
    ASSERT_GE(numbers.size(), 2U);
    EXPECT_EQ(numbers.front(), 0xb5c3U);
    EXPECT_EQ(numbers.back(), 0x4a3dU);
}

TEST_F(CastScreenTest, AServerThatStandsStillHoldsUpNoEnd)
{
    startAgent({}, {{"DISPLAY", display}});
    cast();
    play();
    server.stall(true);
    EXPECT_TRUE(isSilent() || isSilent()) << "what is under way arrives";
    QElapsedTimer time;
    time.start();
    daemon.send("end", {{"id", 1}});
    EXPECT_EQ(end(), "asked: the cast was ended");
    EXPECT_LT(time.elapsed(), 1000);

    daemon.send("cast", order(2));
    EXPECT_EQ(end(), "failed: the screen's server does not answer");
    server.stall(false);
    daemon.send("cast", order(3));
    play();
}

TEST_F(CastScreenTest, AServerThatEndsEndsTheCastAndIsFoundAgain)
{
    startAgent({}, {{"DISPLAY", display}});
    EXPECT_EQ(daemon.next("hello")["capture"], "x11");
    cast();
    play();
    server.terminate();
    EXPECT_EQ(end(), "failed: the screen's server has ended");
    agent.await([this] { return daemon.waiting().contains("hello"); });
    server.waitForFinished();
    Process next;
    startServer(&next);
    EXPECT_TRUE(waitUntil([this] { return daemon.next("hello")["capture"] == "x11"; }));
    next.terminate();
    next.waitForFinished();
}

// Sway, as a user that is not root. Its X server is there for X applications alone.
class CastOutputTest : public CastTest
{
protected:
    CastOutputTest()
    {
        QFile config(runtime.filePath("config"));
        EXPECT_TRUE(config.open(QIODevice::WriteOnly));
        config.write("output HEADLESS-1 mode 1280x720 bg #ffffff solid_color\nxwayland force\n"
                     "exec xhost +local: && echo $DISPLAY >$XDG_RUNTIME_DIR/x && mv $XDG_RUNTIME_DIR/x "
                     "$XDG_RUNTIME_DIR/display\n");
        config.close();
        giveToNobody(runtime.path());
        giveToNobody(config.fileName());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto &[name, value] : Session{{"XDG_RUNTIME_DIR", runtime.path()},
                 {"WLR_BACKENDS", "headless"}, {"WLR_RENDERER", "pixman"}, {"WLR_LIBINPUT_NO_DEVICES", "1"}})
            environment.insert(name, value);
        const QStringList program = asNobody({"sway", "-c", config.fileName()});
        compositor.run(program.first(), program.mid(1), environment);
        compositor.await([&] { return QFileInfo::exists(runtime.filePath("display")); });
        QFile display(runtime.filePath("display"));
        EXPECT_TRUE(display.open(QIODevice::ReadOnly));
        const QString socket = QDir(runtime.path()).entryList({"sway-ipc.*"}, QDir::System).value(0);
        session = {{"XDG_RUNTIME_DIR", runtime.path()}, {"WAYLAND_DISPLAY", "wayland-1"},
            {"DISPLAY", QString::fromUtf8(display.readAll()).trimmed()},
            {"SWAYSOCK", runtime.filePath(socket)}};
    }

    // The names and widths of its outputs.
    QStringList outputs()
    {
        Process client;
        client.run("swaymsg", {"-s", session["SWAYSOCK"], "-r", "-t", "get_outputs"});
        client.awaitEnd();
        QStringList texts;
        const QJsonArray answer = QJsonDocument::fromJson(client.readAllStandardOutput()).array();
        for (const QJsonValue output : answer)
            texts.append(
                output["name"].toString() + ' ' + QString::number(output["current_mode"]["width"].toInt()));
        return texts;
    }

    QTemporaryDir runtime;
    Process compositor;
    Session session;
};

TEST_F(CastOutputTest, TheOutputOfAWaylandCompositorIsCast)
{
    startAgent({}, session);
    const QJsonObject hello = daemon.next("hello");
    EXPECT_EQ(hello["capture"], "wlr-screencopy");
    EXPECT_EQ(hello["capture-remark"].toString(),
        "the first output of the Wayland compositor; the X server at DISPLAY=" + session["DISPLAY"]
            + " is Xwayland, which has the windows of X applications alone");
    cast();
    EXPECT_EQ(play()["height"], 720);
    EXPECT_TRUE(waitUntil([this] { return sink.packets() > 60; })) << "a still picture is repeated";
    daemon.send("pause", {{"id", 1}});
    daemon.next("paused");
    EXPECT_TRUE(isSilent());
    daemon.send("resume", {{"id", 1}});
    play();
    EXPECT_EQ(numbersReceived().back(), 0xffffU);
    compositor.end();
    EXPECT_EQ(end(), "failed: the picture cannot be sent: the Wayland compositor gives no more pictures");
}

TEST_F(CastOutputTest, AFurtherOutputIsMadeOnceAndHasTheModeOfTheDisplay)
{
    sink.formats =
        "00 00 01 04 00000081 00000000 00000000 00 0000 0000 00 none none"; // 640x480 and 1920x1080
    startAgent({}, session);
    QJsonObject further = order();
    further["picture"] = "further-output";
    for (int id = 1; id <= 2; ++id) {
        further["id"] = id;
        daemon.send("cast", further);
        EXPECT_EQ(daemon.next("playing")["height"], 1080);
        EXPECT_TRUE(waitUntil([this] {
            return outputs() == QStringList{"HEADLESS-1 1280", "HEADLESS-2 1920"};
        })) << outputs().join(", ").toStdString();
        daemon.send("end", {{"id", id}});
        EXPECT_EQ(end(), "asked: the cast was ended");
    }
}

TEST_F(CastTest, WithoutSwayNoFurtherOutputIsMade)
{
    startAgent({"--extend"}, {{"DISPLAY", ""}});
    EXPECT_EQ(daemon.next("hello")["capture-remark"],
        "only sway makes a further output, and SWAYSOCK leads to none");
    cast();
    EXPECT_EQ(end(),
        "failed: there is no screen to cast: only sway makes a further output, and SWAYSOCK leads to none");
}

} // namespace
