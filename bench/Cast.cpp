// What a cast of a changing screen costs beside the bare pipeline, how long it takes to start, and how late
// the display shows what the screen shows.

#include "Pipeline.hpp"
#include "Processes.hpp"
#include "Report.hpp"
#include "Screen.hpp"
#include "cast/CastRig.hpp"

#include <QCoreApplication>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <unistd.h>
#include <xcb/xcb.h>

using namespace oz::bench;
using namespace oz::harness;

namespace {

constexpr int Width = 1280;
constexpr int Height = 720;
constexpr int Cells = 4; // a side
constexpr int Numbers = 1 << Cells * Cells;
constexpr int Rounds = 3;
constexpr int RoundTime = 4000; // in milliseconds

// Paints another number ten times a second, as black and white cells over the whole screen.
class Painter
{
public:
    explicit Painter(const QString &display)
        : m_connection(xcb_connect(qPrintable(display), nullptr)),
          m_screen(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data),
          m_context(xcb_generate_id(m_connection))
    {
        xcb_create_gc(m_connection, m_context, m_screen->root, 0, nullptr);
        m_timer.callOnTimeout([this] { paint(); });
        m_timer.start(100);
    }
    ~Painter() { xcb_disconnect(m_connection); }
    Painter(const Painter &) = delete;
    Painter &operator=(const Painter &) = delete;

    /*! When the number was painted; 0 if it was not, or was asked for before. */
    [[nodiscard]] double takeTimeOf(unsigned number) { return m_times.take(number); }

private:
    void paint()
    {
        // Neighbours differ in half of the cells.
        m_number = (m_number * 25'173 + 13'849) % Numbers;
        for (int cell = 0; cell < Cells * Cells; ++cell) {
            const uint32_t colour = m_number >> cell & 1 ? m_screen->white_pixel : m_screen->black_pixel;
            xcb_change_gc(m_connection, m_context, XCB_GC_FOREGROUND, &colour);
            const xcb_rectangle_t place{int16_t(cell % Cells * Width / Cells),
                int16_t(cell / Cells * Height / Cells), Width / Cells, Height / Cells};
            xcb_poly_fill_rectangle(m_connection, m_screen->root, m_context, 1, &place);
        }
        xcb_flush(m_connection);
        m_times[m_number] = now();
    }

    xcb_connection_t *m_connection;
    const xcb_screen_t *m_screen;
    xcb_gcontext_t m_context;
    unsigned m_number = 1;
    QMap<unsigned, double> m_times;
    QTimer m_timer;
};

// Decodes what the display receives, and measures how old each picture is.
class Decoder
{
public:
    Decoder(const TestSink &sink, Painter &painter) : m_sink(sink), m_painter(painter)
    {
        m_decoder.run("gst-launch-1.0",
            QString("-q fdsrc fd=0 ! tsdemux latency=0 ! h264parse ! avdec_h264 max-threads=1 ! "
                    "videoscale method=0 ! videoconvert ! video/x-raw,format=GRAY8,width=64,height=36 ! "
                    "fdsink fd=1 sync=false")
                .split(' '));
        m_read = sink.stream().size();
        m_timer.callOnTimeout([this] { step(); });
        m_timer.start(1);
    }

    Samples delays{"delay from the screen to the decoded picture", {}};

private:
    static constexpr int SmallWidth = 64;
    static constexpr int SmallHeight = 36;
    static constexpr int Size = SmallWidth * SmallHeight;

    void step()
    {
        m_decoder.write(m_sink.stream().mid(m_read));
        m_read = m_sink.stream().size();
        m_pictures += m_decoder.readAll();
        for (; m_pictures.size() >= Size; m_pictures.remove(0, Size)) {
            unsigned number = 0;
            for (int cell = 0; cell < Cells * Cells; ++cell) {
                const int x = cell % Cells * SmallWidth / Cells + SmallWidth / Cells / 2;
                const int y = cell / Cells * SmallHeight / Cells + SmallHeight / Cells / 2;
                number |= unsigned(quint8(m_pictures[y * SmallWidth + x]) > 128) << cell;
            }
            // It starts with what has come meanwhile, and not before a key frame.
            const double painted = m_painter.takeTimeOf(number);
            if (painted > m_begun + RoundTime * 500)
                delays.values.push_back((now() - painted) / 1000);
        }
    }

    const TestSink &m_sink;
    Painter &m_painter;
    Process m_decoder;
    const double m_begun = now();
    qsizetype m_read = 0;
    QByteArray m_pictures;
    QTimer m_timer;
};

// Seconds of processor time of a process and its children that run.
double cpuOf(qint64 process)
{
    QFile stat(QString("/proc/%1/stat").arg(process));
    QFile children(QString("/proc/%1/task/%1/children").arg(process));
    if (!stat.open(QIODevice::ReadOnly) || !children.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray content = stat.readAll();
    const QList<QByteArray> fields = content.mid(content.lastIndexOf(')') + 2).split(' ');
    double seconds = (fields[11].toDouble() + fields[12].toDouble()) / double(::sysconf(_SC_CLK_TCK));
    for (const QByteArray &child : children.readAll().simplified().split(' ')) {
        if (!child.isEmpty())
            seconds += cpuOf(child.toLongLong());
    }
    return seconds;
}

// The share of a core that a process takes for a while, in percent.
double shareOf(qint64 process)
{
    const double before = cpuOf(process);
    const double begun = now();
    (void)waitUntil([] { return false; }, RoundTime);
    return (cpuOf(process) - before) / (now() - begun) * 1e8;
}

class Bench
{
public:
    Bench() : m_daemon(m_root.filePath("dev/cast"))
    {
        m_server.run(
            "Xvfb", {"-screen", "0", "1280x720x24", "-displayfd", "1", "-noreset", "-nolisten", "tcp"});
        m_display = ':' + m_server.line();
        m_environment.insert("DISPLAY", m_display);
        m_environment.insert("OZ_DEVICE_ROOT", m_root.path());
        m_environment.remove("PULSE_SERVER");
        m_environment.remove("XDG_RUNTIME_DIR");
        m_painter.emplace(m_display);
        m_agent.run(OZ_CAST, {"--child"}, m_environment);
        m_agent.await([this] { return m_daemon.isConnected(); });
        hello = m_daemon.next("hello");
    }
    ~Bench()
    {
        m_painter.reset();
        m_agent.end();
        m_server.terminate();
        m_server.waitForFinished();
    }
    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    void measureCast(Samples *start, Samples *share, Samples *delay)
    {
        const double begun = now();
        m_daemon.send("cast",
            {{"id", ++m_id}, {"address", m_sink.address()}, {"control-port", m_sink.controlPort()},
                {"port", 20'000 + ::getpid() % 10'000}, {"connect-limit-ms", 5000}});
        (void)m_daemon.next("playing");
        start->values.push_back((now() - begun) / 1000);
        share->values.push_back(shareOf(m_agent.processId()));
        {
            Decoder decoder(m_sink, *m_painter);
            (void)waitUntil([] { return false; }, RoundTime);
            delay->values.insert(
                delay->values.end(), decoder.delays.values.begin(), decoder.delays.values.end());
        }
        m_daemon.send("end", {{"id", m_id}});
        (void)m_daemon.next("ended");
    }

    // The same pipeline, without a conversation.
    void measureBare(Samples *share)
    {
        oz::cast::PipelinePlan plan;
        oz::cast::Screen screen;
        screen.capture = "x11";
        plan.picture = screen.description(30);
        plan.video = {{oz::cast::VideoMode::Cea, 5, Width, Height, 30}, 1};
        plan.elements = oz::cast::Elements::named(hello["encoder"].toString(), hello["audio"].toString());
        plan.hasAudio = true;
        plan.display = QHostAddress("127.0.0.3"); // where nobody listens
        plan.port = 19'000;
        Process bare;
        bare.run("gst-launch-1.0",
            QStringList{"-q"} + QProcess::splitCommand(oz::cast::Pipeline::description(plan)), m_environment);
        (void)waitUntil([] { return false; }, 1000);
        share->values.push_back(shareOf(bare.processId()));
    }

    QJsonObject hello;

private:
    QTemporaryDir m_root;
    CastDaemon m_daemon;
    TestSink m_sink;
    Process m_server;
    Process m_agent;
    QString m_display;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
    std::optional<Painter> m_painter;
    int m_id = 0;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const RunOptions options = runOptions(argc, argv);
    qunsetenv("XDG_RUNTIME_DIR"); // no sound server for the bare pipeline either
    gst_init(nullptr, nullptr);
    Samples start{"start, from the request to the first packet", {}};
    Samples delay{"delay from the screen to the decoded picture", {}};
    Samples cast{"share of a core: ozcast, 1280x720p30", {}, "%"};
    Samples bare{"share of a core: the same pipeline alone", {}, "%"};
    Bench bench;
    for (int round = 0; round < Rounds; ++round) {
        bench.measureCast(&start, &cast, &delay);
        bench.measureBare(&bare);
    }
    std::printf("  a changing screen, encoded by %s, in %d rounds\n",
        qUtf8Printable(bench.hello["encoder"].toString()), Rounds);
    for (const Samples *samples : std::initializer_list<const Samples *>{&start, &delay, &cast, &bare}) {
        std::printf("  %-50s median %7.1f %s   p90 %7.1f\n", samples->name.c_str(), samples->median(),
            samples->unit.empty() ? "ms" : samples->unit.c_str(), samples->percentile(0.9));
    }
    std::vector<double> ratios;
    for (std::size_t i = 0; i < cast.values.size(); ++i)
        ratios.push_back(cast.values[i] / bare.values[i]);
    const std::vector<Ratio> all{{"processor time of a cast / of its pipeline alone",
        cast.median() / bare.median(), 1.1, deviation(ratios)}};
    const bool isReached = print(all);
    if (!options.json.empty())
        writeJson(options.json, "ms", {start, delay, cast, bare}, all);
    return isReached && !delay.values.empty() ? 0 : 1;
}
