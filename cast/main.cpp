// Shows this machine's screen on a wireless display, for the services daemon or for a person.

#include "Agent.hpp"
#include "Arguments.hpp"
#include "CastSession.hpp"
#include "Console.hpp"
#include "ProgramOutput.hpp"
#include "ScreenWatch.hpp"
#include "SignalWatch.hpp"

#include <QCoreApplication>
#include <QSysInfo>
#include <QUuid>

#include <csignal>
#include <cstdio>
#include <functional>
#include <gst/gst.h>
#include <optional>
#include <sys/prctl.h>
#include <unistd.h>

using namespace oz::cast;

namespace {

struct Options
{
    std::string display;
    int port = 7236;
    bool picture = false;
    bool extend = false;
    bool check = false;
    bool isChild = false;
    int stepLimit = 6000;
    int keepAlive = 5000;
    int connectLimit = 6000;
    int worker = 0; // the descriptor of the order, in the process of a cast
};

// Displays recognise this machine by it. It does not give the machine's own identifier away.
QByteArray sourceIdentifier()
{
    static const QUuid space(QStringLiteral("{5a0d4a1e-3f0c-4c58-9d0e-6a5f7a3b9c21}"));
    const QByteArray machine = QSysInfo::machineUniqueId();
    return (machine.isEmpty() ? QUuid::createUuid() : QUuid::createUuidV5(space, machine)).toRfc4122();
}

CastOrder orderOf(const Options &options)
{
    CastOrder order;
    order.source = {QSysInfo::machineHostName(), sourceIdentifier(), quint16(options.port)};
    order.limits = {std::chrono::milliseconds(options.stepLimit),
        std::chrono::milliseconds(options.keepAlive), std::chrono::milliseconds(options.connectLimit)};
    order.picture = options.picture ? Picture::TestCard
        : options.extend            ? Picture::OfFurtherOutput
                                    : Picture::OfScreen;
    return order;
}

// What SIGTERM and SIGINT ask for, once there is something to end.
using Stop = std::function<void()>;

int castTo(const DisplayName &display, const Options &options, const Elements &elements, Stop *stop)
{
    if (!elements.missing.isEmpty()) {
        std::fprintf(stderr, "ozcast: not installed: %s\n", qUtf8Printable(elements.missing));
        return 1;
    }
    CastOrder order = orderOf(options);
    order.display = display.address;
    order.controlPort = display.controlPort;
    order.videoEncoder = elements.videoName();
    order.audioEncoder = elements.audioName();
    Console console(order);
    QObject::connect(&console, &Console::finished, qApp, &QCoreApplication::exit);
    *stop = [&console] { console.stop(); };
    return QCoreApplication::exec();
}

int serveDaemon(const Options &options, const Elements &elements, Stop *stop)
{
    Agent agent(options.isChild ? Agent::Life::OfConnection : Agent::Life::Long, orderOf(options), elements);
    QObject::connect(&agent, &Agent::finished, qApp, &QCoreApplication::exit, Qt::QueuedConnection);
    *stop = [&agent] { agent.stop(); };
    return QCoreApplication::exec();
}

void describe(const oz::arguments::Verb &program, Options &options)
{
    program.footer(
        "Without --to and --check it serves the daemon that listens under the device root: OZ_DEVICE_ROOT\n"
        "where set, else / where /pps exists, else $XDG_RUNTIME_DIR/ozdevice. SIGTERM and SIGINT end the "
        "cast\n"
        "in order, and the program.\n\n"
        "Exit status: 0 success, 1 the cast failed or nothing can be cast, 2 wrong use.");
    const auto to = program
                        .option("--to", options.display,
                            "Cast to the display at this address, and print the steps; without a port, it is "
                            "asked at 7250 "
                            "to connect, with port 0 it is not asked")
                        .valueName("ADDRESS[:PORT]");
    program.count("--port", options.port, "Where the display connects")
        .valueName("PORT")
        .defaultText("7236")
        .needs(to);
    program.flag("--picture", options.picture, "Cast a test card, which needs no screen");
    program.flag(
        "--extend", options.extend, "Cast a further output, by which the desktop grows; only sway makes one");
    program.flag("--check", options.check, "Print what can be cast, and with what, and exit");
    program.flag("--child", options.isChild, "End with the process that started it, and with the connection");
    program.count("--step-limit", options.stepLimit, "Milliseconds for each step of the display")
        .valueName("MS")
        .defaultText("6000");
    program
        .count(
            "--keep-alive", options.keepAlive, "Milliseconds between questions whether the display is there")
        .valueName("MS")
        .defaultText("5000");
    program
        .count("--connect-limit", options.connectLimit,
            "Milliseconds for the display to connect, unless the "
            "daemon says how many")
        .valueName("MS")
        .defaultText("6000");
    program.count("--worker", options.worker, "Make one cast for the parent process").hide();
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    const oz::arguments::Parser parser(
        "Shows this machine's screen on a wireless display (Miracast).", "ozcast", OZ_VERSION);
    describe(parser.program(), options);
    try {
        if (!parser.parse(argc, argv))
            return 0;
    } catch (const oz::arguments::WrongWords &error) {
        return oz::arguments::reportWrongUse(QString::fromUtf8(error.what()));
    }
    const QString name = QString::fromStdString(options.display);
    const auto display = DisplayName::parse(name);
    if (!name.isEmpty() && !display)
        return oz::arguments::reportWrongUse(
            QLatin1String("--to: expected ADDRESS[:PORT], not '") + name + u'\'');
    if (options.port > 0xffff)
        return oz::arguments::reportWrongUse(
            QLatin1String("--port: there is no port ") + QString::number(options.port));
    const QCoreApplication application(argc, argv);
    oz::arguments::logPrintably();
    if (options.worker > 0) {
        // The parent hears these, and says how the cast is to end.
        std::signal(SIGINT, SIG_IGN);
        std::signal(SIGTERM, SIG_IGN);
        CastSession::serve(options.worker);
    }
    if (options.isChild)
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    Stop stop;
    std::optional<oz::arguments::SignalWatch> signalWatch;
    if (!options.check)
        signalWatch.emplace({SIGTERM, SIGINT}, [&stop](int) { stop(); });
    gst_init(nullptr, nullptr);
    const Elements elements = Elements::find();
    const int status = options.check ? int(!printCheck(orderOf(options).picture, elements))
        : display                    ? castTo(*display, options, elements, &stop)
                                     : serveDaemon(options, elements, &stop);
    if (ScreenWatch::isAnyLooking()) {
        std::fflush(nullptr);
        ::_exit(status); // destroys nothing that the thread has
    }
    return status;
}
