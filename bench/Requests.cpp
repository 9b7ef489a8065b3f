// Requests that are answered by a service in another process, beside a bare exchange over the same kind of
// socket and beside a call over the message bus, in one run.

#include "Processes.hpp"
#include "Report.hpp"

#include "daemon/Daemon.hpp"
#include "miracast/MiracastPublisher.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace oz;
using namespace oz::bench;

namespace {

const char *const BusService = "oz.Manager";
const char *const BusPath = "/manager";

// One facility's request: it has no effect, so that it can be repeated, and an answer that tells whose it is.
struct FacilityRequest
{
    std::string name;
    QVariantMap message; // as the facility sends it
    std::function<std::function<bool()>()> make; // of a living object, a request: whether the answer is right
    int maxRounds = 1'000'000;
    std::chrono::milliseconds rest{0}; // before each round, until an earlier answer is out of the way
};

const std::vector<FacilityRequest> &facilityRequests()
{
    static const std::vector<FacilityRequest> all{
        {"wifi-direct", {{"msg", "wifi_p2p_cancel_connect"}, {"id", "oz.device.WiFiDirect"}},
            []() -> std::function<bool()> {
                return [wifi = std::make_shared<device::WiFiDirect>()] {
                    return wifi->cancelConnectRequest() == device::WiFiDirectResult::NoRequestToCancel;
                };
            }},
        // Its answer comes through a state object, to everybody.
        {"miracast", {{"msg", "miracast_session_pause"}, {"id", "requestpause1394712345678"}},
            []() -> std::function<bool()> {
                return [miracast = std::make_shared<device::MiracastManager>()] {
                    using Result = device::MiracastResult;
                    Result::Type answer = Result::Success;
                    QEventLoop loop;
                    const auto connection = QObject::connect(miracast.get(),
                        qOverload<Result::Type>(&device::MiracastManager::pauseCompleted),
                        [&](Result::Type result) {
                            answer = result;
                            loop.quit();
                        });
                    QTimer::singleShot(std::chrono::seconds(10), &loop, &QEventLoop::quit);
                    miracast->requestPause();
                    loop.exec();
                    QObject::disconnect(connection);
                    return answer == Result::InvalidRequest;
                };
            },
            40,
            services::MiracastPublisher::LoneAnswerTime + services::MiracastPublisher::AnswerTime
                + std::chrono::milliseconds(20)},
    };
    return all;
}

sockaddr_un bareAddress()
{
    sockaddr_un address{AF_UNIX, {}};
    const QByteArray path = QFile::encodeName(deviceRoot() + "/bare");
    std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
    return address;
}

[[noreturn]] void die(const char *what)
{
    std::perror(what);
    std::exit(1);
}

// Answers each message with itself, one connection after another.
[[noreturn]] void serveBare(const Bell &bell)
{
    const sockaddr_un address = bareAddress();
    const int server = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (::bind(server, reinterpret_cast<const sockaddr *>(&address), sizeof address) < 0
        || ::listen(server, 10) < 0)
        die("bench: bare");
    bell.ring();
    for (;;) {
        const int client = ::accept4(server, nullptr, nullptr, SOCK_CLOEXEC);
        char buffer[4096];
        for (ssize_t size = 0; (size = ::recv(client, buffer, sizeof buffer, 0)) > 0;) {
            if (::send(client, buffer, std::size_t(size), MSG_NOSIGNAL) != size)
                break;
        }
        ::close(client);
    }
}

int connectBare()
{
    const sockaddr_un address = bareAddress();
    const int client = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (::connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address) < 0)
        die("bench: bare");
    return client;
}

bool exchangeBare(int client, const QByteArray &message)
{
    char buffer[4096];
    return ::send(client, message.constData(), std::size_t(message.size()), MSG_NOSIGNAL) == message.size()
        && ::recv(client, buffer, sizeof buffer, 0) == message.size();
}

class BusManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "oz.Manager")

public Q_SLOTS:
    QVariantMap request(const QVariantMap &message)
    {
        return {{"res", message.value("msg")}, {"id", message.value("id")}, {"err", 22}};
    }
};

int serve(const QString &role, const Bell &bell)
{
    if (role == "bare")
        serveBare(bell);
    if (role == "facility") {
        const services::Daemon daemon{services::Configuration::simulated(), services::JsonNode::emptyMap()};
        bell.ring();
        return QCoreApplication::exec();
    }
    BusManager manager;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(BusPath, &manager, QDBusConnection::ExportAllSlots)
        || !bus.registerService(BusService))
        return 1;
    bell.ring();
    return QCoreApplication::exec();
}

struct Way
{
    Samples samples;
    std::function<bool()> request;
};

// Measures the ways in turns, so that whatever else the machine does falls on all of them.
void measure(std::vector<Way> *ways, int rounds, std::chrono::milliseconds rest)
{
    const int warmUp = std::min(200, rounds / 10);
    for (int round = 0; round < rounds + warmUp; ++round) {
        std::this_thread::sleep_for(rest);
        for (Way &way : *ways) {
            const double begun = now();
            if (!way.request()) {
                std::fprintf(stderr, "bench: %s: a wrong answer\n", way.samples.name.c_str());
                std::exit(1);
            }
            if (round >= warmUp)
                way.samples.values.push_back(now() - begun);
        }
    }
    for (const Way &way : *ways) {
        std::printf("  %-54s median %7.1f   p10 %7.1f   p90 %7.1f   p99 %7.1f\n", way.samples.name.c_str(),
            way.samples.median(), way.samples.percentile(0.1), way.samples.percentile(0.9),
            way.samples.percentile(0.99));
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == "--role")
        return serve(words.value(3), Bell(words.value(2).toInt()));
    const auto [json, rounds] = runOptions(argc, argv);

    const QTemporaryDir root("/dev/shm/oz-bench-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    const PrivateBus busDaemon;
    const Listener bareService(argv[0], {"bare"});
    const Listener services(argv[0], {"facility"});
    const Listener busService(argv[0], {"bus"});
    QDBusConnection bus = QDBusConnection::sessionBus();

    std::vector<Samples> samples;
    std::vector<Ratio> ratios;
    std::printf("Requests to another process, microseconds (%d rounds, in turns)\n", rounds);
    for (const FacilityRequest &request : facilityRequests()) {
        const QByteArray text = PpsObject::encode(request.message);
        std::vector<Way> ways;
        ways.push_back({{request.name + ": socket, with its connection", {}}, [&] {
                            const int client = connectBare();
                            const bool answered = exchangeBare(client, text);
                            ::close(client);
                            return answered;
                        }});
        ways.push_back({{request.name + ": request", {}}, request.make()});
        ways.push_back({{request.name + ": message bus, call", {}}, [&] {
                            QDBusMessage call =
                                QDBusMessage::createMethodCall(BusService, BusPath, BusService, "request");
                            call << request.message;
                            return bus.call(call).type() == QDBusMessage::ReplyMessage;
                        }});
        measure(&ways, std::min(rounds, request.maxRounds), request.rest);
        const auto add = [&](const char *name, std::size_t under, double share, double aim) {
            ratios.push_back(ratioOf(
                request.name + " request / " + name, ways[1].samples, ways[under].samples, share, aim));
        };
        add("socket, median", 0, 0.5, 3);
        add("socket, p99", 0, 0.99, 3);
        add("message bus, median", 2, 0.5, 1);
        add("message bus, p99", 2, 0.99, 1);
        for (const Way &way : ways)
            samples.push_back(way.samples);
    }
    const bool reached = print(ratios);
    if (!json.empty())
        writeJson(json, "us", samples, ratios);
    return reached ? 0 : 1;
}

#include "Requests.moc"
