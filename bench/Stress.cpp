// Many processes that send requests to the services at once: whether each gets its own answers, and whether
// the services stay as they are. Not one of the benchmarks: run it by hand, `bench_stress [--processes 50]
// [--seconds 10] [--facility wifi-direct|miracast]`.

#include "Processes.hpp"

#include "daemon/Daemon.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace oz;
using namespace oz::bench;

namespace {

struct Tally
{
    long requests = 0;
    long wrong = 0;
};

// Requests of every kind with answers that are known beforehand, and messages with ids that nobody else has.
Tally askUntil(double end)
{
    using Result = device::WiFiDirectResult;
    Tally tally;
    const auto count = [&tally](bool right) {
        ++tally.requests;
        tally.wrong += !right;
    };
    device::WiFiDirect wifi;
    PpsObject control("/pps/services/wifi_p2p/manager/control?wait");
    count(control.open(PpsOpenMode::PublishSubscribe));
    while (now() < end) {
        const int scan = wifi.requestScan();
        count(scan == Result::Success || scan == Result::Busy);
        count(wifi.requestConnect("nobody", device::WiFiDirectIntent::Any,
                  device::WiFiDirectWpsMethod::PushButtonConfiguration, QString())
            == Result::DeviceNotFound);
        count(wifi.cancelConnectRequest() == Result::NoRequestToCancel);
        count(wifi.requestStartSession() == Result::NoNetworkConnection);
        count(wifi.requestStopSession("none") == Result::NoNetworkConnection);
        count(wifi.ipAddress("nobody").isEmpty());
        const QString id = QString("%1-%2").arg(::getpid()).arg(tally.requests);
        count(control.write(PpsObject::encode({{"msg", "wifi_p2p_cancel_connect"}, {"id", id}})));
        const QVariantMap answer = PpsObject::decode(control.read()).value("@control").toMap();
        count(answer.value("id") == id && answer.value("res") == "wifi_p2p_cancel_connect"
            && answer.value("err") == 22);
    }
    return tally;
}

// Requests to a service that answers everybody in one place, each waiting for its own answer.
Tally askMiracastUntil(double end)
{
    using device::MiracastManager;
    using Result = device::MiracastResult;
    const struct
    {
        std::function<void(MiracastManager &)> ask;
        void (MiracastManager::*completed)(Result::Type);
        Result::Type expected;
    } requests[] = {
        {&MiracastManager::requestPause, &MiracastManager::pauseCompleted, Result::InvalidRequest},
        {&MiracastManager::requestResume, &MiracastManager::resumeCompleted, Result::InvalidRequest},
        {&MiracastManager::requestDisconnect, &MiracastManager::disconnectCompleted, Result::InvalidRequest},
        {[](MiracastManager &miracast) { miracast.requestConnect("nobody", QString()); },
            &MiracastManager::connectCompleted, Result::DeviceNotFound},
        {&MiracastManager::requestScan, &MiracastManager::scanCompleted, Result::Success},
    };
    Tally tally;
    MiracastManager miracast;
    QEventLoop loop;
    QList<int> heard; // the request and its result, in turns
    for (int i = 0; i < int(std::size(requests)); ++i) {
        QObject::connect(&miracast, requests[i].completed, [&heard, &loop, i](Result::Type result) {
            heard += {i, result};
            loop.quit();
        });
    }
    for (int i = ::getpid() % 5; now() < end; i = (i + 1) % 5) {
        QTimer deadline;
        deadline.setSingleShot(true);
        QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
        deadline.start(std::chrono::minutes(2));
        heard.clear();
        requests[i].ask(miracast);
        loop.exec();
        ++tally.requests;
        tally.wrong += heard != QList<int>{i, requests[i].expected};
    }
    return tally;
}

long residentKilobytes(pid_t pid)
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/" + std::to_string(pid) + "/statm") >> total >> resident;
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

qsizetype descriptors(pid_t pid)
{
    return QDir(QString("/proc/%1/fd").arg(pid)).entryList(QDir::Files | QDir::System).size();
}

Tally askInProcesses(int processes, double seconds, Tally (*ask)(double end))
{
    int ends[2];
    if (::pipe(ends) < 0)
        std::abort();
    std::fflush(stdout);
    const double end = now() + seconds * 1e6;
    for (int i = 0; i < processes; ++i) {
        if (::fork() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            Tally tally;
            // A thread of its own has an event loop that is not shared with the other processes.
            std::thread([&] { tally = ask(end); }).join();
            ::_exit(::write(ends[1], &tally, sizeof tally) == sizeof tally ? 0 : 1);
        }
    }
    Tally sum;
    for (int i = 0; i < processes; ++i) {
        Tally tally;
        if (::read(ends[0], &tally, sizeof tally) != sizeof tally)
            std::abort();
        sum.requests += tally.requests;
        sum.wrong += tally.wrong;
    }
    for (int i = 0; i < processes; ++i)
        ::wait(nullptr);
    ::close(ends[0]);
    ::close(ends[1]);
    return sum;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == "--role") {
        const services::Daemon daemon{services::Configuration::simulated(), services::JsonNode::emptyMap()};
        Bell(words.value(2).toInt()).ring();
        return QCoreApplication::exec();
    }
    int processes = 50;
    double seconds = 10;
    Tally (*ask)(double) = askUntil;
    for (int i = 1; i + 1 < words.size(); i += 2) {
        if (words[i] == "--processes")
            processes = words[i + 1].toInt();
        else if (words[i] == "--seconds")
            seconds = words[i + 1].toDouble();
        else if (words[i] == "--facility" && words[i + 1] == "miracast")
            ask = askMiracastUntil;
    }
    const QTemporaryDir root("/dev/shm/oz-stress-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    qputenv("QT_LOGGING_RULES", "oz.device=false");
    const Listener services(argv[0], {"facility"});

    askInProcesses(processes, 1, ask); // what the first ones make the services load is not their own
    const long memoryBefore = residentKilobytes(services.pid());
    const qsizetype descriptorsBefore = descriptors(services.pid());
    const Tally tally = askInProcesses(processes, seconds, ask);
    ::usleep(100'000); // the last connections end
    const long memory = residentKilobytes(services.pid());
    const qsizetype open = descriptors(services.pid());
    std::printf(
        "%d processes, %.0f s: %ld requests, %ld wrong answers; services: %ld to %ld KiB, %lld to %lld "
        "descriptors\n",
        processes, seconds, tally.requests, tally.wrong, memoryBefore, memory, qlonglong(descriptorsBefore),
        qlonglong(open));
    return tally.wrong == 0 && open == descriptorsBefore && memory - memoryBefore < 512 ? 0 : 1;
}
