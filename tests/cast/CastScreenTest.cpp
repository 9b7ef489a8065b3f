// What ozcast shows of an X server, and what becomes of a cast when that server misbehaves.

#include "cast/CastRig.hpp"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <xcb/xcb.h>

using namespace oz::harness;

namespace {

constexpr int Width = 1280;
constexpr int Height = 720;
constexpr int Cells = 4; // a side

// The numbers of the pictures that the display has received, each once in a row.
std::vector<unsigned> numbersReceived(const TestSink &sink)
{
    QTemporaryFile stream;
    QTemporaryFile pictures;
    if (!stream.open() || !pictures.open())
        throw std::runtime_error("no temporary files");
    stream.write(sink.stream());
    stream.close();
    Process decoder;
    decoder.run("gst-launch-1.0",
        {"-q", "filesrc", "location=" + stream.fileName(), "!", "tsdemux", "!", "h264parse", "!",
            "avdec_h264", "!", "videoconvert", "!", "video/x-raw,format=GRAY8", "!", "filesink",
            "location=" + pictures.fileName()});
    decoder.awaitEnd();
    EXPECT_EQ(decoder.errors(), "");
    const QByteArray decoded = pictures.readAll();
    std::vector<unsigned> numbers;
    for (qsizetype picture = 0; picture + Width * Height <= decoded.size(); picture += Width * Height) {
        unsigned number = 0;
        for (int cell = 0; cell < Cells * Cells; ++cell) {
            const int x = cell % Cells * Width / Cells + Width / Cells / 2;
            const int y = cell / Cells * Height / Cells + Height / Cells / 2;
            number |= unsigned(quint8(decoded[picture + y * Width + x]) > 128) << cell;
        }
        if (numbers.empty() || numbers.back() != number)
            numbers.push_back(number);
    }
    return numbers;
}

class CastScreenTest : public CastTest
{
protected:
    CastScreenTest()
    {
        server.run(
            "Xvfb", {"-screen", "0", "1280x720x24", "-displayfd", "1", "-noreset", "-nolisten", "tcp"});
        display = ':' + server.line();
    }
    ~CastScreenTest() override
    {
        // A server that is killed leaves its lock and its socket.
        server.stall(false);
        server.terminate();
        server.waitForFinished();
    }

    // Paints the bits of \a number as black and white cells over the whole screen.
    void paint(unsigned number) const
    {
        xcb_connection_t *connection = xcb_connect(qPrintable(display), nullptr);
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        const xcb_gcontext_t context = xcb_generate_id(connection);
        xcb_create_gc(connection, context, screen->root, 0, nullptr);
        for (int cell = 0; cell < Cells * Cells; ++cell) {
            const uint32_t colour = number >> cell & 1 ? screen->white_pixel : screen->black_pixel;
            xcb_change_gc(connection, context, XCB_GC_FOREGROUND, &colour);
            const xcb_rectangle_t place{int16_t(cell % Cells * Width / Cells),
                int16_t(cell / Cells * Height / Cells), Width / Cells, Height / Cells};
            xcb_poly_fill_rectangle(connection, screen->root, context, 1, &place);
        }
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        xcb_disconnect(connection);
    }

    Process server;
    QString display;
};

TEST_F(CastScreenTest, WhatIsPaintedOnTheScreenArrivesAtTheDisplay)
{
    paint(0xb5c3);
    startAgent({}, display);
    const QJsonObject hello = daemon.next("hello");
    EXPECT_EQ(hello["capture"], "x11");
    EXPECT_EQ(hello["capture-remark"], "the X server at DISPLAY=" + display + ", which comes first");
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
    const std::vector<unsigned> numbers = numbersReceived(sink);
    ASSERT_GE(numbers.size(), 2U);
    EXPECT_EQ(numbers.front(), 0xb5c3U);
    EXPECT_EQ(numbers.back(), 0x4a3dU);
}

TEST_F(CastScreenTest, AServerThatStandsStillHoldsUpNoEnd)
{
    startAgent({}, display);
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
    startAgent({}, display);
    EXPECT_EQ(daemon.next("hello")["capture"], "x11");
    cast();
    play();
    server.terminate();
    EXPECT_EQ(end(), "failed: the screen's server has ended");
    agent.await([this] { return daemon.waiting().contains("hello"); });
    server.waitForFinished();
    Process next;
    next.run("Xvfb", {display, "-screen", "0", "1280x720x24", "-nolisten", "tcp"});
    EXPECT_TRUE(waitUntil([this] { return daemon.next("hello")["capture"] == "x11"; }));
    next.terminate();
    next.waitForFinished();
}

TEST_F(CastTest, TheOutputOfAWaylandCompositorIsCast)
{
    QTemporaryDir runtime;
    QFile config(runtime.filePath("config"));
    ASSERT_TRUE(config.open(QIODevice::WriteOnly));
    config.write("output HEADLESS-1 mode 1280x720 bg #ffffff solid_color\nxwayland disable\n");
    config.close();
    giveToNobody(runtime.path());
    giveToNobody(config.fileName());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : std::map<QString, QString>{{"XDG_RUNTIME_DIR", runtime.path()},
             {"WLR_BACKENDS", "headless"}, {"WLR_RENDERER", "pixman"}, {"WLR_LIBINPUT_NO_DEVICES", "1"}})
        environment.insert(name, value);
    const QStringList program = asNobody({"sway", "-c", config.fileName()});
    Process compositor;
    compositor.run(program.first(), program.mid(1), environment);
    compositor.await([&] { return QFileInfo::exists(runtime.filePath("wayland-1")); });
    startAgent({}, {}, runtime.filePath("wayland-1"));
    EXPECT_TRUE(waitUntil([this] { return daemon.next("hello")["capture"] == "wlr-screencopy"; }));
    cast();
    EXPECT_EQ(play()["height"], 720);
    EXPECT_TRUE(waitUntil([this] { return sink.packets() > 60; })) << "a still picture is repeated";
    daemon.send("pause", {{"id", 1}});
    daemon.next("paused");
    EXPECT_TRUE(isSilent());
    daemon.send("resume", {{"id", 1}});
    play();
    EXPECT_EQ(numbersReceived(sink).back(), 0xffffU);
    compositor.end();
    EXPECT_TRUE(end().startsWith("failed: "));
}

} // namespace
