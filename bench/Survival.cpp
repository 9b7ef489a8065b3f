// Two minutes in which the daemon is killed at random instants, while applications watch every facility and
// send requests. At the end each of them has to agree with the tree, none may hang, and none may have grown.
// Not one of the benchmarks: run it by hand, `bench_survival [--seconds 120] [--clients 10] [--seed N]`. It
// exits with 1 where something is wrong.

#include "Processes.hpp"

#include <oz/client/DaemonClient.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMetaProperty>
#include <QProcess>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <unistd.h>
#include <vector>

using namespace oz;
using namespace std::chrono_literals;
using namespace oz::device;

namespace {

// All that an application can watch.
struct Watched
{
    BatteryInfo battery;
    SdCardInfo sdcard;
    SimCardInfo simcard;
    CellularRadioInfo radio;
    CellularNetworkInfo network;
    CellularDataInterface internet{"internet"};
    CellularDataInterface mms{"mms"};
    DeviceInfo device;
    DisplayInfo panel{0};
    DisplayInfo external{1};
    WiFiDirect wifi;
    MiracastManager miracast;

    [[nodiscard]] QString values() const
    {
        QString text;
        for (const QObject *object : std::initializer_list<const QObject *>{&battery, &sdcard, &simcard,
                 &radio, &network, &internet, &mms, &device, &panel, &external, &wifi, &miracast}) {
            const QMetaObject *type = object->metaObject();
            for (int i = type->superClass()->propertyCount(); i < type->propertyCount(); ++i) {
                const QMetaProperty property = type->property(i);
                QDebug(&text).nospace()
                    << type->className() << '.' << property.name() << '=' << property.read(object) << ' ';
            }
        }
        return text;
    }
};

// An application: it watches everything and asks for something now and then, until it is told to be quiet
// with a line on its standard input; a further line makes it tell what it sees.
int watch(unsigned seed)
{
    std::mt19937 random(seed);
    Watched watched;
    Led led;
    VibrationController vibration;
    QTimer load;
    QObject::connect(&load, &QTimer::timeout, [&] {
        switch (random() % 6) {
        case 0:
            led.flash(int(random() % 3) + 1);
            break;
        case 1:
            led.cancel();
            break;
        case 2:
            (void)watched.mms.requestConnect();
            break;
        case 3:
            (void)watched.mms.requestDisconnect();
            break;
        case 4:
            (void)watched.wifi.requestScan();
            break;
        default:
            vibration.start(10, 5);
            break;
        }
    });
    load.start(std::chrono::milliseconds(50 + random() % 100));
    std::puts("ready");
    std::fflush(stdout);
    QSocketNotifier orders(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&orders, &QSocketNotifier::activated, [&] {
        std::string order;
        if (!std::getline(std::cin, order))
            return QCoreApplication::quit();
        load.stop();
        if (order == "quiet") {
            (void)watched.mms.requestDisconnect();
            led.cancel();
            std::puts("quiet");
        } else {
            std::puts(
                qPrintable(QString("led.active=%1 ").arg(led.isActive()) + watched.values().simplified()));
        }
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}

long residentKilobytes(qint64 pid)
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/" + std::to_string(pid) + "/statm") >> total >> resident;
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

qsizetype descriptors(qint64 pid)
{
    return QDir(QString("/proc/%1/fd").arg(pid)).entryList(QDir::Files | QDir::System).size();
}

QByteArray lastLines(const QString &file)
{
    QFile log(file);
    (void)log.open(QIODevice::ReadOnly);
    const QByteArrayList lines = log.readAll().split('\n');
    return lines.mid(std::max<qsizetype>(0, lines.size() - 20)).join('\n');
}

class Client
{
public:
    Client(const QString &program, unsigned seed, const QString &logFile) : log(logFile)
    {
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        m_process.setStandardErrorFile(log);
        m_process.start(program, {"--watch", QString::number(seed)});
        m_process.waitForStarted();
    }
    ~Client()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished();
    }

    // Its answer; empty where it hangs.
    [[nodiscard]] QByteArray tell(const char *order)
    {
        m_process.write(QByteArray(order) + '\n');
        return hear();
    }
    [[nodiscard]] QByteArray hear()
    {
        QElapsedTimer waited;
        waited.start();
        while (!m_process.canReadLine() && waited.elapsed() < 90'000)
            m_process.waitForReadyRead(100);
        return m_process.readLine().trimmed();
    }
    [[nodiscard]] qint64 pid() const { return m_process.processId(); }

    const QString log;
    long memory = 0;
    qsizetype files = 0;

private:
    QProcess m_process;
};

class Services
{
public:
    explicit Services(QString program) : m_program(std::move(program)) { start(); }
    ~Services()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }

    void start()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(m_program, {"--config", "/dev/null", "--simulated"});
        m_process.waitForStarted();
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    [[nodiscard]] qint64 pid() const { return m_process.processId(); }

private:
    QString m_program;
    QProcess m_process;
};

// A detached display that is turned is not announced to applications, so the attached one is. One order as
// `ozdevice sim` would give it, to a daemon that may die any moment.
void disturb(std::mt19937 &random)
{
    static const QStringList orders{"battery level 10", "battery level 90", "battery plug", "battery unplug",
        "sdcard unmount", "sdcard mount", "simcard pin", "simcard ready", "radio power off", "radio power on",
        "radio data off", "radio data on", "activity standby", "activity active", "orientation left-up",
        "orientation top-up", "display attach 1", "display detach 1", "display rotate 0 90",
        "display rotate 0 0", "wifi-direct enabled off", "wifi-direct enabled on", "miracast stop 5",
        "miracast start", "cellular-network abroad serve", "cellular-network home-lte serve"};
    QStringList words = orders[qsizetype(random() % unsigned(orders.size()))].split(' ');
    const QString facility = words.takeFirst();
    const QString verb = words.takeFirst();
    try {
        client::DaemonClient().ask(
            "sim", QVariantMap{{"facility", facility}, {"verb", verb}, {"arguments", words}}, {.limit = 3s});
    } catch (const client::DaemonError &) {
        // It has been killed, or has not started yet.
    }
}

bool survive(int seconds, int clientCount, unsigned seed, const QString &logs)
{
    std::mt19937 random(seed);
    const QString program = QCoreApplication::applicationFilePath();
    Services services(QCoreApplication::applicationDirPath() + "/ozdeviced");
    const auto waitForServices = [] {
        return client::DaemonClient().waitUntilReady(std::chrono::seconds(30));
    };
    if (!waitForServices())
        return false;
    std::vector<std::unique_ptr<Client>> clients;
    clients.reserve(std::size_t(clientCount));
    for (int i = 0; i < clientCount; ++i)
        clients.push_back(std::make_unique<Client>(program, seed + unsigned(i), logs + QString::number(i)));
    // A power manager that is not there when the application starts is not looked for later.
    for (const auto &client : clients)
        (void)client->hear();

    QElapsedTimer clock;
    clock.start();
    int kills = 0;
    bool isRight = true;
    bool isMeasured = false;
    while (clock.elapsed() < seconds * 1000) {
        for (unsigned pause = random() % 700; pause > 0; pause -= std::min(pause, 20U)) {
            disturb(random);
            ::usleep(20'000);
        }
        services.kill();
        ++kills;
        ::usleep(random() % 4 == 0 ? random() % 300'000 : 0);
        services.start();
        if (random() % 3 == 0)
            continue; // killed again while it starts
        if (!waitForServices()) {
            std::printf("the daemon did not start again after %d kills\n", kills);
            return false;
        }
        // Libraries loaded by then may still be there at the end.
        if (!isMeasured && clock.elapsed() > seconds * 250) {
            isMeasured = true;
            for (const auto &client : clients) {
                client->memory = residentKilobytes(client->pid());
                client->files = descriptors(client->pid());
            }
        }
    }
    isRight = waitForServices() && isRight;
    for (std::size_t i = 0; i < clients.size(); ++i) {
        if (clients[i]->tell("quiet") != "quiet") {
            std::printf("client %zu hangs\n", i);
            isRight = false;
        }
    }
    ::sleep(8); // what is under way ends: scans, flashes, the grace time of clients that did not come back
    Client reference(program, seed, logs + "reference");
    (void)reference.hear();
    (void)reference.tell("quiet");
    ::sleep(1);
    const QByteArray expected = reference.tell("report");
    std::vector<QByteArray> reports;
    reports.reserve(clients.size());
    for (const auto &client : clients)
        reports.push_back(client->tell("report"));
    long mostGrown = 0;
    qsizetype mostFiles = 0;
    for (std::size_t i = 0; i < clients.size(); ++i) {
        if (const QByteArray seen = reports[i]; seen != expected) {
            isRight = false;
            const QByteArrayList one = seen.split(' ');
            const QByteArrayList other = expected.split(' ');
            for (qsizetype word = 0; word < std::max(one.size(), other.size()); ++word) {
                if (one.value(word) != other.value(word)) {
                    std::printf("client %zu sees %s, the tree says %s\n", i, one.value(word).constData(),
                        other.value(word).constData());
                }
            }
            ::sleep(10);
            std::printf("10 s later it %s; it logged last:\n%s\n",
                clients[i]->tell("report") == expected ? "sees the same" : "still does not see the same",
                lastLines(clients[i]->log).constData());
        }
        mostGrown = std::max(mostGrown, residentKilobytes(clients[i]->pid()) - clients[i]->memory);
        mostFiles = std::max(mostFiles, descriptors(clients[i]->pid()) - clients[i]->files);
    }
    std::printf(
        "%d kills in %d s under %d clients: %s; clients grew by at most %ld KiB and %lld descriptors; the "
        "daemon has %ld KiB and %lld descriptors\n",
        kills, seconds, clientCount, isRight ? "all agree with the tree, none hangs" : "WRONG", mostGrown,
        qlonglong(mostFiles), residentKilobytes(services.pid()), qlonglong(descriptors(services.pid())));
    return isRight && mostGrown < 1024 && mostFiles <= 2;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == "--watch")
        return watch(words.value(2).toUInt());
    int seconds = 120;
    int clients = 10;
    unsigned seed = std::random_device()();
    for (int i = 1; i + 1 < words.size(); i += 2) {
        if (words[i] == "--seconds")
            seconds = words[i + 1].toInt();
        else if (words[i] == "--clients")
            clients = words[i + 1].toInt();
        else if (words[i] == "--seed")
            seed = words[i + 1].toUInt();
    }
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    const QTemporaryDir root("/dev/shm/oz-survival-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    qputenv("QT_LOGGING_RULES", "oz.deviced.info=false");
    qputenv("OZ_WAIT_LIMIT", "10");
    qputenv("OZ_GRACE_TIME", "3");
    return survive(seconds, clients, seed, root.filePath("log-")) ? 0 : 1;
}
