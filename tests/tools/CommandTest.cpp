// The command and the daemon that it starts, as processes.

#include "harness/Process.hpp"
#include "harness/Testing.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <csignal>
#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::harness;

namespace {

const QString Command = OZ_COMMAND;

struct Result
{
    int status;
    QString output;
    QString errors;
    bool operator==(const Result &) const = default;
};

void PrintTo(const Result &result, std::ostream *out)
{
    *out << result.status << '\n' << result.output.toStdString() << '\n' << result.errors.toStdString();
}

Result run(const QStringList &words)
{
    QProcess process;
    process.start(Command, words);
    EXPECT_TRUE(process.waitForFinished(60'000)) << words.join(' ').toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

// The value in \a json under the keys, or at the indices of its arrays.
QJsonValue at(QJsonValue json, const QStringList &keys)
{
    for (const QString &key : keys)
        json = json.isArray() ? json.toArray().at(key.toInt()) : json.toObject().value(key);
    return json;
}

// A daemon on the test's own device root.
class Phone
{
public:
    explicit Phone(const QStringList &words = {})
    {
        m_process.start(OZ_DAEMON, QStringList{"--config", "/dev/null", "--simulated"} + words);
        EXPECT_TRUE(m_process.waitForStarted());
        EXPECT_EQ(run({"wait-ready", "--timeout", "20s"}).status, 0);
    }
    ~Phone()
    {
        m_process.terminate();
        EXPECT_TRUE(m_process.waitForFinished());
        EXPECT_EQ(m_process.exitCode(), 0);
    }

private:
    QProcess m_process;
};

using CommandTest = DeviceTest;

TEST_F(CommandTest, ShowsAndWatchesWhatTheSimulatedPhoneDoes)
{
    const Phone phone;
    EXPECT_TRUE(run({"list", "--names"}).output.startsWith("sdcard\n"));
    EXPECT_EQ(run({"show", "battery", "level"}), (Result{0, "80\n", ""}));
    EXPECT_EQ(run({"show", "sdcard", "state"}), (Result{0, "Mounted\n", ""}));
    EXPECT_EQ(run({"show", "display", "displayName", "--display", "1"}), (Result{0, "hdmi\n", ""}));
    EXPECT_EQ(run({"show", "sdcard"}).output,
        "sdcard\n  state     SdCardState     Mounted\n  activity  SdCardActivity  Idle\n");
    EXPECT_EQ(QJsonDocument::fromJson(run({"show", "sdcard", "--json"}).output.toUtf8()).object(),
        (QJsonObject{{"sdcard",
            QJsonObject{{"state", QJsonObject{{"type", "SdCardState"}, {"value", "Mounted"}}},
                {"activity", QJsonObject{{"type", "SdCardActivity"}, {"value", "Idle"}}}}}}));

    QProcess watching;
    watching.start(Command, {"watch", "sdcard", "--all", "--count", "4"});
    QProcess watchingJson;
    watchingJson.start(Command, {"watch", "sdcard", "--json", "--count", "2", "--tell-begin"});
    const auto signalled = [&] {
        return watching.state() == QProcess::NotRunning && watchingJson.state() == QProcess::NotRunning;
    };
    // The card comes and goes until both processes have opened the object, and once more.
    ASSERT_TRUE(waitUntil([&] {
        EXPECT_EQ(run({"sim", "sdcard", "busy"}).status, 0);
        EXPECT_EQ(run({"sim", "sdcard", "unmount"}).status, 0);
        EXPECT_EQ(run({"sim", "sdcard", "mount"}).status, 0);
        return signalled();
    }));
    EXPECT_EQ(watching.exitCode(), 0);
    const QStringList lines = QString::fromUtf8(watching.readAll()).split('\n', Qt::SkipEmptyParts);
    EXPECT_EQ(lines.size(), 4);
    EXPECT_EQ(lines.filter(QRegularExpression("  sdcard  (state|activity)Changed\\(")), lines);
    EXPECT_EQ(watchingJson.readLine(), "{\"watching\":[\"sdcard\"]}\n");
    const QJsonObject first = QJsonDocument::fromJson(watchingJson.readLine()).object();
    EXPECT_EQ(first.keys(), (QStringList{"arguments", "facility", "signal", "signature", "time"}));
    EXPECT_TRUE(first.value("signature").toString().contains("oz::device::"));
}

TEST_F(CommandTest, PrintsEachErrorInOneLineAndExitsWithTheStatusOfItsKind)
{
    const Phone phone;
    root.remove("/pps/services/cds/cnice/mms_control");
    const std::tuple<QStringList, int, const char *> rows[] = {
        {{"shwo"}, 2, "ozdevice has no verb 'shwo'; did you mean show?"},
        {{"pps", "gte"}, 2, "pps has no verb 'gte'; did you mean get?"},
        {{"frobnicate"}, 2, "ozdevice has no verb 'frobnicate'; there is list, show, "},
        {{"show", "sdkard"}, 2, "there is no facility 'sdkard'; did you mean sdcard?"},
        {{"show", "battery", "levle"}, 2, "battery has no property 'levle'; did you mean level?"},
        {{"show", "data-profile", "name"}, 2, "data-profile: which one? --name is one of "},
        {{"show", "battery", "--display", "1"}, 2, "battery takes no --display"},
        {{"show", "display", "--display", "7"}, 3, "display: there is no '7'; there is 0 and 1"},
        {{"show", "data-profile", "--name", "x"}, 3, "data-profile: there is no 'x'; there is enterprise, "},
        {{"show", "cellular-network", "--index", "1"}, 3, "cellular-network: there is no '1'; there is 0"},
        {{"show", "network", "--interface", "x"}, 3, "network: there is no 'x'; there is lo"},
        {{"watch", "network", "--interface", "lo", "--every", "0"}, 2, "--every is a time longer than 0"},
        {{"watch", "sdcard", "--every", "1s"}, 2, "--every is for counters"},
        {{"watch", "--for", "soon"}, 2, "--for: soon unit not recognized. Allowed values: {h,m,ms,s}"},
        {{"call", "sdcard", "eject"}, 2, "sdcard has no method 'eject'; there is none"},
        {{"call", "led", "flahs"}, 2, "led has no method 'flahs'; did you mean flash?"},
        {{"call", "led", "flash", "x"}, 2, "led: argument 1 of flash is a whole number (int), not 'x'"},
        {{"call", "led", "flash", "--set", "color"}, 2, "led: color takes one value, one of None"},
        {{"call", "led", "flash", "--set", "color=Brown"}, 2, "led: color is one of None, Red"},
        {{"call", "network", "update"}, 2, "network: which one? --interface is one of lo"},
        {{"call", "data-profile", "requestConnect"}, 2,
            "data-profile: which one? --name is one of enterprise"},
        {{"set", "sdcard", "size", "1"}, 2, "sdcard has no property 'size'; there is state and activity"},
        {{"set", "sdcard", "state", "Busy"}, 2, "sdcard: state is read-only"},
        {{"sim", "sdcard", "eject"}, 2, "sdcard has no 'eject'; it has insert, remove, busy, idle"},
        {{"sim", "device", "eject"}, 2, "device has no 'eject'; there is "},
        {{"sim", "battery", "level"}, 2, "battery level takes PERCENT, not 0 arguments"},
        {{"play", "tour", "--speed", "quick"}, 2, "the speed is a number from 0.001 to 100000, or max"},
        {{"record", root.file("/r.json"), "--only", "batery"}, 2, "batery cannot be recorded; what can is "},
        {{"demo", "--speed", "-3"}, 2, ""},
        {{"run", "--junit", "r.xml", "--", "true"}, 2, "--junit requires --scenario"},
        {{"run", "--until-played", "--", "true"}, 2, "--until-played requires --scenario"},
        {{"pps", "get", "nothing/there"}, 3, "/pps/nothing/there: No such file or directory"},
        {{"pps", "get", "system/BattMgr/status", "x"}, 3,
            "/pps/system/BattMgr/status: no attribute 'x'; it has "},
        {{"pps", "get", "system/BattMgr/status?g=a"}, 1,
            "/pps/system/BattMgr/status?g=a: no path of an object, or an unknown option"},
        {{"pps", "set", "x", "a:n:one"}, 2, "attribute line 1: the value of 'a' is not"},
        {{"pps", "set", "services/led/control", "a::b"}, 1, "/pps/services/led/control: a service serves it"},
        {{"pps", "send", "system/BattMgr/status", "a::b"}, 1,
            "/pps/system/BattMgr/status: a state object takes no messages"},
        {{"run", "--", "/no/such/program"}, 127, "/no/such/program: "},
    };
    for (const auto &[words, status, error] : rows) {
        const Result result = run(words);
        EXPECT_EQ(result.status, status) << words.join(' ').toStdString();
        EXPECT_EQ(result.output, QString()) << words.join(' ').toStdString();
        EXPECT_TRUE(result.errors.startsWith("ozdevice: " + QString(error))) << result.errors.toStdString();
        EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.toStdString();
    }
    const std::tuple<QStringList, Result> calls[] = {
        {{"--name", "internet", "requestConnect"}, {0, "Requested (0)\n", ""}},
        {{"--name", "enterprise", "requestConnect"},
            {1, "NotPossible (4)\n",
                "ozdevice: data-profile enterprise: only certain applications may use this profile\n"}},
        {{"--name", "mms", "requestConnect"},
            {1, "InvalidInterface (2)\n",
                "ozdevice: data-profile mms: /pps/services/cds/cnice/mms_control: No such file or "
                "directory\n"}},
    };
    for (const auto &[words, result] : calls)
        EXPECT_EQ(run(QStringList{"call", "data-profile"} + words), result);
    for (const QStringList &words : {QStringList{"list"}, {"show", "sdcard"}, {"call", "led"}, {"--help"}}) {
        QProcess process;
        process.setStandardOutputFile("/dev/full");
        process.start(Command, words);
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), 1) << words.join(' ').toStdString();
        EXPECT_TRUE(process.readAllStandardError().startsWith("ozdevice: cannot write to standard output"));
    }
}

TEST_F(CommandTest, NamesTheObjectThatIsMissingOrNotPermitted)
{
    const QString unfed = "ozdevice: nothing feeds the tree under " + root.file("/pps")
        + ": no ozdeviced is running (try: ozdevice run -- COMMAND)\n";
    for (const QStringList &words :
        {QStringList{"show"}, {"show", "sdcard"}, {"watch"}, {"call", "led", "flash"}})
        EXPECT_EQ(run(words), (Result{3, "", unfed})) << words.join(' ').toStdString();
    EXPECT_EQ(run({"status"}).status, 3);
    EXPECT_EQ(run({"sim", "sdcard", "mount"}).status, 3);
    EXPECT_EQ(run({"wait-ready", "--timeout", "20ms"}).status, 3);
    root.place("/phone.json", "{\"data-profile\": {\"profiles\": {\"a\": {\"control-mode\": \"0000\"}}}}");
    {
        const Phone phone({"--phone", root.file("/phone.json")});
        const QFileInfo own(root.file(""));
        const QString whose = "(it is for the user " + own.owner() + " and the group " + own.group() + ")\n";
        const std::tuple<QStringList, int, QString> rows[] = {
            {{"show", "wifi-direct"}, 3,
                "ozdevice: wifi-direct: /pps/services/wifi_p2p/manager/status: Permission denied " + whose},
            {{"call", "data-profile", "--name", "a", "requestConnect"}, 1,
                "ozdevice: data-profile a: /pps/services/cds/cnice/a_control: Permission denied " + whose},
        };
        // Without privileges, this mode lets nobody read the object.
        QFile::setPermissions(root.file("/pps/services/wifi_p2p/manager/status"), {});
        for (const auto &[words, status, errors] : rows) {
            EXPECT_EQ(runWithoutPrivileges([words = words, errors = errors] {
                const Result result = run(words);
                return result.errors == errors ? result.status : 100;
            }),
                status)
                << words.join(' ').toStdString();
        }
        QFile::setPermissions(
            root.file("/pps/services/wifi_p2p/manager/status"), QFile::ReadOwner | QFile::WriteOwner);
    }
    {
        const Phone phone({"--source", "battery=none"});
        EXPECT_EQ(run({"show", "battery"}).errors,
            "ozdevice: battery: /pps/system/BattMgr/status: No such file or directory (nothing feeds it: the "
            "configuration says so)\n");
        EXPECT_TRUE(QRegularExpression("\nbattery +none +none +the configuration says so\n")
                        .match(run({"doctor"}).output)
                        .hasMatch());
    }
    // The last published values stay.
    EXPECT_EQ(run({"show", "sdcard"}),
        (Result{0, "sdcard\n  state     SdCardState     Mounted\n  activity  SdCardActivity  Idle\n",
            "ozdevice: nothing feeds the tree under " + root.file("/pps")
                + ": no ozdeviced is running; the values are the last ones\n"}));
}

TEST_F(CommandTest, ShowsTheServicesTheirSourcesAndTheAgeOfEachObject)
{
    // Leave out the profile whose control is for root only.
    root.place("/phone.json", R"({"data-profile": {"profiles": {"internet": {}}}})");
    auto phone = std::make_unique<Phone>(QStringList{"--phone", root.file("/phone.json")});
    const auto status = [](int expected) {
        const Result result = run({"status", "--json"});
        EXPECT_EQ(result.status, expected) << result.errors.toStdString();
        return QJsonDocument::fromJson(result.output.toUtf8()).object();
    };
    QJsonObject told = status(0);
    EXPECT_TRUE(at(told, {"daemon", "running"}).toBool());
    const QString process = run({"pps", "get", "system/ozdeviced/status", "pid"}).output.trimmed();
    EXPECT_EQ(at(told, {"daemon", "pid"}).toInt(), process.toInt());
    EXPECT_EQ(at(told, {"facilities", "display", "source"}).toString(), "simulated");
    EXPECT_EQ(at(told, {"facilities", "display", "instances"}).toArray(), (QJsonArray{"0", "1"}));
    EXPECT_GE(at(told, {"objects", "/pps/system/BattMgr/status", "age"}).toInt(-1), 0);
    EXPECT_TRUE(at(told, {"objects", "/pps/services/led/control", "served"}).toBool());
    const auto doctor = [](int expected) {
        const Result result = run({"doctor", "--json"});
        EXPECT_EQ(result.status, expected) << result.output.toStdString();
        return QJsonDocument::fromJson(result.output.toUtf8()).object();
    };
    EXPECT_EQ(at(doctor(0), {"facilities", "battery", "state"}).toString(), "known");
    EXPECT_TRUE(run({"doctor"})
                    .output.endsWith(
                        "\n\nthe services run, and every object can be read\n14 of 14 facilities are fed\n"));

    // Publish a source's state as the daemon does.
    EXPECT_EQ(
        run({"pps", "set", "system/ozdeviced/status",
                "facilities:json:{\"battery\":{\"source\":\"upower\",\"state\":\"absent\",\"reason\":\"it "
                "is not on the bus\"}}"})
            .status,
        0);
    EXPECT_TRUE(QRegularExpression("battery +upower +absent +it is not on the bus")
                    .match(run({"status"}).output)
                    .hasMatch());
    root.place("/pps/system/BattMgr/status", "nonsense");
    EXPECT_EQ(at(doctor(1), {"problems"}).toArray(),
        (QJsonArray{"battery: the source 'upower' is absent: it is not on the bus",
            "/pps/system/BattMgr/status: its content is malformed"}));

    ::kill(process.toInt(), SIGSTOP);
    EXPECT_TRUE(at(status(3), {"daemon", "problem"}).toString().endsWith(") does not answer"));
    const ProgramForEverybody command(OZ_COMMAND);
    EXPECT_EQ(runWithoutRights([&] {
        qputenv("LD_LIBRARY_PATH", QFileInfo(command.file()).path().toLocal8Bit());
        return WEXITSTATUS(std::system(qPrintable(command.file() + " doctor >/dev/null 2>&1")));
    }),
        3);
    ::kill(process.toInt(), SIGCONT);
    phone.reset();
    told = status(3);
    EXPECT_FALSE(at(told, {"daemon", "running"}).toBool(true));
    EXPECT_TRUE(at(told, {"objects"}).toObject().contains("/pps/system/filesystem/removable/sdcard"));
}

TEST_F(CommandTest, DescribesFacilitiesAndListsTheirMethods)
{
    const Result methods = run({"call", "wifidirect"});
    EXPECT_EQ(methods.status, 0);
    EXPECT_TRUE(methods.output.contains("  requestConnect(QString hardwareAddress, WiFiDirectIntent intent, "
                                        "WiFiDirectWpsMethod wpsMethod, QString wpsPin): WiFiDirectResult\n"
                                        "      intent is one of GroupOwner, Client, Any\n"))
        << methods.output.toStdString();
    EXPECT_TRUE(methods.output.contains("      answered by scanCompleted\n"));
    const QJsonObject led = QJsonDocument::fromJson(run({"describe", "led", "--json"}).output.toUtf8())
                                .object()["led"]
                                .toObject();
    EXPECT_EQ(at(led, {"class"}), "oz::device::Led");
    EXPECT_EQ(at(led, {"properties", "0", "writable"}), true);
    EXPECT_EQ(at(led, {"properties", "0", "enumerators", "1"}), "Red");
    EXPECT_EQ(at(led, {"methods", "1", "parameters", "0", "name"}), "count");
    EXPECT_EQ(at(led, {"signals", "0", "signature"}), "colorChanged(oz::device::LedColor::Type)");
    EXPECT_TRUE(run({"describe", "display"}).output.contains("\n  wireless: bool (constant, revision 2)\n"));
}

TEST_F(CommandTest, WaitsUntilTheEffectOfACallEnds)
{
    root.place("/phone.json", R"({"led": {"on-seconds": 0.05, "off-seconds": 0.05}})");
    auto phone = std::make_unique<Phone>(QStringList{"--phone", root.file("/phone.json")});
    const auto activity = [] { return run({"pps", "get", "services/led/activity"}).output; };
    QProcess watching;
    watching.start(Command, {"watch", "led", "--json"});
    // Flash until the watcher has begun.
    ASSERT_TRUE(waitUntil([&] {
        EXPECT_EQ(run({"call", "led", "flash", "1"}).status, 0);
        return watching.canReadLine();
    }));
    EXPECT_EQ(run({"call", "led", "flash", "3", "--set", "color=Blue"}).status, 0);
    EXPECT_TRUE(activity().contains(R"("color":"blue","count":3,"end":"done")")) << activity().toStdString();
    watching.terminate();
    ASSERT_TRUE(watching.waitForFinished());
    const QJsonObject line = QJsonDocument::fromJson(watching.readLine()).object();
    EXPECT_EQ(line.keys(), (QStringList{"changed", "facility", "object", "time"}));
    EXPECT_EQ(line.value("object"), "/pps/services/led/activity");

    QProcess calling;
    const auto begin = [&] {
        calling.start(Command, {"call", "led", "flash", "--set", "color=Green"});
        return waitUntil([&] { return activity().contains(R"(requests:json:[{"color":"green")"); });
    };
    ASSERT_TRUE(begin());
    ::kill(pid_t(calling.processId()), SIGINT);
    ASSERT_TRUE(calling.waitForFinished());
    EXPECT_EQ(calling.exitCode(), 128 + SIGINT);
    EXPECT_TRUE(waitUntil([&] { return activity().contains(R"("end":"cancelled")"); }));
    ASSERT_TRUE(begin());
    phone.reset();
    ASSERT_TRUE(calling.waitForFinished());
    EXPECT_EQ(calling.exitCode(), 3);
    EXPECT_EQ(calling.readAllStandardError(), "ozdevice: led: the service went away\n");
    const Result unserved = run({"call", "led", "flash", "3"});
    EXPECT_EQ(unserved.status, 3);
    EXPECT_TRUE(
        unserved.errors.endsWith("ozdevice: led: /pps/services/led/control: No such file or directory\n"))
        << unserved.errors.toStdString();
    const Result set = run({"set", "led", "color", "Blue"});
    EXPECT_EQ(set.output, "color = Blue\n");
    EXPECT_TRUE(set.errors.contains("belongs to this one object")) << set.errors.toStdString();
}

TEST_F(CommandTest, ShowsAndWatchesTheCountersOfAnInterface)
{
    EXPECT_TRUE(run({"show", "network"}).output.contains("networkInterfaceName  QString     \"lo\"\n"));
    QStringList watch{"watch", "network", "--interface", "lo", "--every", "20ms", "--count", "2"};
    const QStringList lines = run(watch).output.split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0].simplified(), "packetsReceived bytesReceived packetsSent bytesSent");
    EXPECT_EQ(lines[3].simplified().split(' ').mid(1, 1), QStringList{"lo"});
    EXPECT_EQ(lines[3].simplified().split(' ').size(), 10);
    watch.last() = "1";
    watch.append("--json");
    const QJsonObject row = QJsonDocument::fromJson(run(watch).output.toUtf8()).object();
    EXPECT_EQ(row.keys(), (QStringList{"facility", "interface", "perSecond", "time", "total"}));
    EXPECT_EQ(row.value("total").toObject().keys(),
        (QStringList{"bytesReceived", "bytesSent", "packetsReceived", "packetsSent"}));
}

TEST_F(CommandTest, ACallPrintsTheSignalsThatFollowAndCtrlCEndsAWaitingOne)
{
    root.place("/phone.json", R"({"wifi-direct": {"scan-seconds": 0.2, "connect-seconds": 0}})");
    const Phone phone({"--phone", root.file("/phone.json")});
    const auto call = [](const QStringList &words) {
        return run(QStringList{"call", "wifi-direct"} + words).output;
    };
    // The end of a scan answers it.
    const QString scanned = call({"requestScan"});
    EXPECT_TRUE(scanned.startsWith("Success (0)\n") && scanned.endsWith("\nscanCompleted()\n"))
        << scanned.toStdString();
    EXPECT_TRUE(
        scanned.contains("deviceDiscovered(\"Living room\", \"02:00:00:00:01:01\", Display, Miracast, "));
    EXPECT_EQ(call({"deviceType", "02:00:00:00:01:01"}), "Display (7)\n");
    EXPECT_EQ(call({"requestStartSession"}), "NoNetworkConnection (4)\n");
    EXPECT_EQ(call({"requestConnect", "02:00:00:00:01:01", "Any", "RandomPin", "12345670"}), "Success (0)\n");
    ASSERT_TRUE(waitUntil([&] { return call({"ipAddress", "02:00:00:00:01:01"}).contains("192.168.49.1"); }));
    EXPECT_EQ(run({"call", "wifi-direct", "ipAddress", "nobody"}).status, 1);
    const QString started = call({"requestStartSession"});
    ASSERT_TRUE(started.startsWith("Success (0)\nsessionStarted(\"")) << started.toStdString();
    EXPECT_EQ(call({"requestStopSession", started.section('"', 1, 1)}), "Success (0)\nsessionStopped()\n");

    // A blocked call dies of the signal; a call that waits in its event loop exits with the signal's status.
    const std::tuple<const char *, int> rows[] = {{"wifi-direct", SIGINT}, {"miracast", (128 + SIGINT) << 8}};
    for (const auto &[facility, ending] : rows) {
        EXPECT_EQ(run({"sim", facility, "never-answer"}).status, 0);
        int terminal = -1;
        const pid_t waiting = ::forkpty(&terminal, nullptr, nullptr, nullptr);
        ASSERT_GE(waiting, 0) << "no terminal to be had";
        if (waiting == 0) {
            ::execl(OZ_COMMAND, OZ_COMMAND, "call", facility, "requestScan", nullptr);
            ::_exit(127);
        }
        QByteArray told;
        char buffer[256];
        for (ssize_t size = 0; !told.contains('\n') && (size = ::read(terminal, buffer, sizeof buffer)) > 0;)
            told.append(buffer, size);
        EXPECT_EQ(told,
            QByteArray("ozdevice: ") + facility
                + " requestScan waits for the service (Ctrl-C breaks it off)\r\n");
        EXPECT_EQ(::write(terminal, "\x03", 1), 1);
        int status = 0;
        EXPECT_EQ(::waitpid(waiting, &status, 0), waiting);
        EXPECT_EQ(status, ending) << facility;
        ::close(terminal);
    }
}

TEST_F(CommandTest, ACallPrintsSignalsUntilItsAnswerAndFailsUnlessThatIsSuccess)
{
    root.place("/phone.json",
        R"({"miracast": {"scan-seconds": 0, "sinks": {"tv": {"name": "\u202e", "type": "7"}}}})");
    {
        const Phone phone({"--phone", root.file("/phone.json")});
        const auto call = [](const QStringList &words) {
            return run(QStringList{"call", "miracast"} + words);
        };
        const Result scanned = call({"requestScan"});
        EXPECT_EQ(scanned.status, 0);
        EXPECT_EQ(scanned.output,
            "deviceDiscovered(\"\\u202e\", \"02:00:00:00:02:01\", Unknown, Unknown)\n"
            "scanCompleted(Success)\n");
        const Result refused = call({"requestConnect", "nobody", ""});
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.output, "connectCompleted(DeviceNotFound)\n");
        EXPECT_EQ(call({"warmup", "--set", "miracast_name=Gallery"}).status, 0);
        EXPECT_EQ(run({"pps", "get", "services/miracast/status", "app_context"}).output,
            "{\"name\":\"Gallery\",\"persistent\":false}\n");

        // No answer follows a request that cannot be sent, and the command waits for none. The warning is
        // printed once, and the logging rules do not change the status.
        root.remove("/pps/services/miracast/control");
        const QStringList unsent{"call", "miracast", "requestConnect", "a\"b", "1234"};
        EXPECT_EQ(run(unsent).status, 3);
        root.place("/pps/services/miracast/control", "@control\n");
        const QString warning = "MiracastManager::sendCommand - Unable to write message: ";
        for (const char *rules : {"", "oz.device=false"}) {
            qputenv("QT_LOGGING_RULES", rules);
            const Result result = run(unsent);
            EXPECT_EQ(result.status, 1);
            EXPECT_TRUE(result.errors.startsWith("ozdevice: miracast: \"" + warning))
                << result.errors.toStdString();
            EXPECT_EQ(result.errors.count(warning), 1);
            EXPECT_EQ(run(QStringList{"-v"} + unsent).errors.count(warning), *rules ? 1 : 2);
        }
        qunsetenv("QT_LOGGING_RULES");
        root.remove("/pps/services/miracast/control");
    }
    root.place("/phone.json", R"({"hardware": {"miracast": false}})");
    const Phone phone({"--phone", root.file("/phone.json")});
    EXPECT_EQ(run({"call", "miracast", "requestScan"}),
        (Result{3, "", "ozdevice: miracast: the device does not support it\n"}));
}

TEST_F(CommandTest, ReadsAndWritesTheTreeItself)
{
    EXPECT_EQ(run({"pps", "set", "box/one", "a::text", "b:n:2", "--mode", "600"}).status, 0);
    EXPECT_EQ(root.mode("/pps/box/one"), 0600u);
    EXPECT_EQ(run({"pps", "set", "/pps/box/one", "b:n:3", "c:json:[1]", "-a"}).status, 0);
    EXPECT_EQ(run({"pps", "ls", "box"}).output, "one\n");
    EXPECT_EQ(run({"pps", "ls"}).output, "box/\n");
    EXPECT_EQ(run({"pps", "get", "box/one"}).output, "@one\nb:n:3\nc:json:[1]\n");
    EXPECT_EQ(run({"pps", "get", "box/one?f=b"}).output, "@one\nb:n:3\n");
    EXPECT_EQ(run({"pps", "get", "box/one", "b"}).output, "3\n");
    EXPECT_EQ(
        run({"pps", "watch", "box/one?f=c", "--count", "1", "--json"}).output, "{\"@one\":{\"c\":[1]}}\n");
    EXPECT_EQ(run({"pps", "rm", "box/one", "c"}).status, 0);
    EXPECT_EQ(run({"pps", "set", "box/one", "d::x", "--replace"}).status, 0);
    EXPECT_EQ(run({"pps", "get", "box/one"}).output, "@one\nd::x\n");
    EXPECT_EQ(run({"pps", "rm", "box/one"}).status, 0);
    EXPECT_EQ(run({"pps", "rm", "box/one"}).status, 3);
    const Phone phone;
    const QString refusal =
        run({"pps", "send", "system/ozdeviced/control", "msg::nonsense", "id:n:7", "--wait"}).output;
    EXPECT_TRUE(refusal.startsWith(
        "@control\nerr:n:22\nerrstr::unknown request 'nonsense'; known are describe, sim, play, "))
        << refusal.toStdString();
    EXPECT_TRUE(refusal.endsWith("\nid:n:7\nres::nonsense\n")) << refusal.toStdString();
}

TEST_F(CommandTest, RunGivesACommandAPhoneOfItsOwnAndItsExitStatus)
{
    const QString script =
        QString("test \"$(%1 pps get system/filesystem/removable/sdcard mounted)\" = true || exit 1; "
                "echo \"$OZ_DEVICE_ROOT\"; exit 7")
            .arg(Command);
    const Result result = run({"run", "--", "sh", "-c", script});
    EXPECT_EQ(result.status, 7) << result.errors.toStdString();
    EXPECT_FALSE(QDir(result.output.trimmed()).exists()) << "the phone's root is gone with it";
    EXPECT_EQ(run({"run", "--", "sh", "-c", "kill -KILL $$"}).status, 128 + SIGKILL);

    QProcess interrupted;
    interrupted.start(Command, {"run", "--", "sh", "-c", "echo \"$OZ_DEVICE_ROOT\"; exec sleep 60"});
    ASSERT_TRUE(waitUntil([&] { return interrupted.canReadLine(); }));
    const QString ownRoot = QString::fromUtf8(interrupted.readLine()).trimmed();
    EXPECT_TRUE(QDir(ownRoot).exists());
    interrupted.terminate();
    ASSERT_TRUE(interrupted.waitForFinished());
    EXPECT_EQ(interrupted.exitCode(), 128 + SIGTERM);
    EXPECT_FALSE(QDir(ownRoot).exists());
}

TEST_F(CommandTest, TheDemoShowsEveryChangeWithoutATerminalAndCleansUpWhenInterrupted)
{
    qputenv("XDG_RUNTIME_DIR", root.file("").toLocal8Bit());
    const Result tour = run({"demo", "--speed", "20"});
    EXPECT_EQ(tour.status, 0) << tour.errors.toStdString();
    for (const char *change : {"device orientationChanged(RightUp)", "sdcard activityChanged(Busy)",
             "cellular-network 0 signalStrengthChanged(-79)", "battery levelChanged(4, Charging)",
             "display 1 attachedChanged(true)", "radio poweredOnChanged(false)",
             "simcard stateChanged(PinRequired)", "data-profile internet connectionStateChanged(Connected)"})
        EXPECT_TRUE(tour.output.simplified().contains(change)) << change << tour.output.toStdString();
    QProcess interrupted;
    interrupted.start(Command, {"demo"});
    ASSERT_TRUE(waitUntil([&] { return interrupted.canReadLine(); }));
    ::kill(pid_t(interrupted.processId()), SIGINT);
    ASSERT_TRUE(interrupted.waitForFinished());
    EXPECT_EQ(interrupted.exitCode(), 128 + SIGINT);
    EXPECT_EQ(QDir(root.file("")).entryList({"ozdevice-run-*"}), QStringList());
}

TEST_F(CommandTest, CompletesVerbsFacilitiesPathsAndChangesOfThePhone)
{
    const Phone phone;
    const std::tuple<QStringList, QStringList> rows[] = {
        {{"show", "--display", ""}, {"0", "1"}},
        {{"call", "data-profile", "--name", ""}, {"enterprise", "internet", "legacy", "mms", "tethering"}},
        {{"call", "led", "flash", "--set", ""}, {"color="}},
        {{"call", "--display", "1", "wifi-direct", "requestConnect", "x", ""},
            {"GroupOwner", "Client", "Any"}},
        {{"set", "led", ""}, {"color"}},
        {{"sim", "sdcard", ""}, {"insert", "remove", "busy", "idle", "kill-service", "start-service"}},
        {{"sim", "radio", "power", ""}, {"on", "off"}},
        {{"sim", "display", "attach", ""}, {"0", "1"}},
        {{"sim", "wifi-direct", "peer-goes", ""}, {"tv", "laptop", "printer", "camera", "speaker"}},
        {{"sim", "miracast", "sink-goes", ""}, {"tv", "projector", "set-top-box", "monitor"}},
        {{"completion", ""}, {"bash", "zsh", "fish"}},
        {{"pps", "get", "/pps/system/f"},
            {"/pps/system/BattMgr/", "/pps/system/filesystem/", "/pps/system/ozdeviced/"}},
        {{"pps", "get", "/pps/system/filesystem/removable/"}, {"/pps/system/filesystem/removable/sdcard"}},
        {{"pps", "get", "system/filesystem/removable/sdcard", ""}, {"busy", "mounted"}},
        {{"pps", "s"}, {"ls", "get", "set", "rm", "watch", "send"}},
    };
    for (const auto &[words, candidates] : rows) {
        const QString found = run(QStringList{"complete", "--"} + words).output;
        EXPECT_EQ(found.split('\n', Qt::SkipEmptyParts), candidates) << words.join(' ').toStdString();
    }
    EXPECT_TRUE(run({"complete", "--", "record", "x", "--only", ""}).output.contains("battery\n"));
    EXPECT_TRUE(run({"complete", "--", "show", "wifid"}).output.contains("wifidirect\n"));
    EXPECT_FALSE(run({"complete", "--", "show", "wifi"}).output.contains("wifidirect\n"));
    // Each shell offers what its script returns.
    const std::tuple<const char *, QString> shells[] = {
        {"bash", "COMP_WORDS=(%1 sim sdcard re); COMP_CWORD=3; _ozdevice; echo ${COMPREPLY[@]}"},
        {"zsh",
            "compadd() { while [[ $1 != -- ]] shift; shift; print -l -- ${(M)@:#re*} }\n"
            "words=(%1 sim sdcard re); CURRENT=4; _ozdevice"},
        {"fish", "complete -C '%1 sim sdcard re'"},
    };
    for (const auto &[shell, script] : shells) {
        QString definition = run({"completion", shell}).output;
        if (qstrcmp(shell, "zsh") == 0)
            definition.prepend("compdef() { }\n");
        QProcess process;
        process.start(shell, {"-c", definition + script.arg(Command)});
        ASSERT_TRUE(process.waitForFinished()) << shell;
        EXPECT_EQ(process.readAllStandardOutput().trimmed(), "remove") << shell;
    }
}

TEST_F(CommandTest, PlaysEveryInstalledScenarioToItsEnd)
{
    const QStringList lines = run({"play", "--list"}).output.split('\n', Qt::SkipEmptyParts);
    EXPECT_EQ(lines.size(), QDir(OZ_SCENARIOS, "*.json").count());
    EXPECT_FALSE(lines.isEmpty());
    for (const QString &line : lines) {
        const QString name = line.section(' ', 0, 0);
        EXPECT_GT(line.simplified().size(), name.size() + 10) << "without a description";
        const Result result = run({"run", "--scenario", name, "--speed", "max", "--wait-for", "none",
            "--until-played", "--", "sleep", "100"});
        EXPECT_EQ(result.status, 0) << result.output.toStdString();
        EXPECT_EQ(result.errors, QString());
        EXPECT_TRUE(result.output.contains("... passed")) << "it expects nothing";
    }
}

TEST_F(CommandTest, AScenarioTestsTheCommandThatItRunsWith)
{
    const QString file = root.file("/s.json");
    const auto runs = [&](const QByteArray &steps, const QStringList &options, const QString &script) {
        root.place("/s.json",
            R"({"phone": {"battery": {"level": 9}}, "variables": {"n": 2}, "steps": [)" + steps + "]}");
        return run(
            QStringList{"run", "--scenario", "s.json"} + options + QStringList{"--", "bash", "-c", script});
    };
    const QString before = QDir::currentPath();
    QDir::setCurrent(root.file("/"));
    const QString flash = OZ_COMMAND " call led flash 2 >/dev/null;";
    const QByteArray expected =
        R"({"expect-request": "led.flash", "with": "count == ${n}", "within": 5, "name": "<2>"})";
    const Result good = runs(expected, {"--junit", "r.xml", "--until-played"}, flash + "exec sleep 100");
    EXPECT_EQ(good.status, 0) << good.errors.toStdString();
    QFile report(root.file("/r.xml"));
    ASSERT_TRUE(report.open(QIODevice::ReadOnly));
    const QString xml = report.readAll();
    EXPECT_TRUE(xml.contains(R"(<testsuite name="s" tests="1" failures="0" errors="0")"))
        << xml.toStdString();
    EXPECT_TRUE(xml.contains(R"(<testcase classname="s" name="&lt;2&gt;")")) << xml.toStdString();

    const QString place = "ozdevice: " + file + ":1: ";
    const QByteArray battery = R"("battery level 3", {"expect": "battery.level == 9", "within": 0})";
    const std::tuple<QByteArray, QStringList, QString, int, QString> rows[] = {
        // The phone is the scenario's. A command that ends first also ends a scenario that expects nothing.
        {"{\"wait\": 100}", {},
            "test $(" OZ_COMMAND " pps get system/BattMgr/status | grep -c StateOfCharge.:9) = 1", 0, ""},
        {"{\"wait\": 100}", {"--wait-for", "none"}, "exit 5", 5, ""},
        {"{\"wait\": 100}," + expected, {"--wait-for", "none"}, "true", 1,
            "ozdevice: the command ended before the scenario, which still expects"},
        {expected, {"--set", "n=3", "--speed", "max", "--junit", "bad.xml"}, flash + "exec sleep 100", 1,
            place
                + "expect-request led.flash with count == 3 within 5 s: 0 of 1 came; "
                  "asked was led.flash color=red count=2"},
        {battery, {"--wait-for", "none"}, "exec sleep 100", 1,
            place + "expect battery.level == 9 within 0 s: battery.level is 3"},
        {"\"battery level 101\"", {}, "touch started", 1,
            place + "steps[0]: battery level: expected a whole number"},
        {"\"battery plug\"", {"--set", "m=3"}, "touch started", 1,
            place + "there is no variable 'm' to be set"},
    };
    for (const auto &[steps, options, script, status, error] : rows) {
        const Result result = runs(steps, options, script);
        EXPECT_EQ(result.status, status) << steps.toStdString() << result.errors.toStdString();
        EXPECT_TRUE(error.isEmpty() ? result.errors.isEmpty() : result.errors.startsWith(error))
            << result.errors.toStdString();
    }
    EXPECT_FALSE(QFile::exists("started"));
    QFile failures(root.file("/bad.xml"));
    ASSERT_TRUE(failures.open(QIODevice::ReadOnly));
    EXPECT_TRUE(failures.readAll().contains("0 of 1 came; asked was led.flash color=red count=2"));
    QDir::setCurrent(before);
}

TEST_F(CommandTest, AScenarioBeginsWhenTheCommandUsesThePhone)
{
    root.place("/s.json", R"({"phone": {"battery": {"level": 9}}, "steps": ["battery level 3"]})");
    const QString report = root.file("/r.xml");
    // The command starts later than a scenario that does not wait.
    const QString slow = "set -e; status=$OZ_DEVICE_ROOT/pps/system/BattMgr/status; "
                         "level() { grep -c \"StateOfCharge.:$1\" $status >/dev/null; }; sleep 0.3; ";
    const QString never = "ozdevice: the scenario was never begun: the command ";
    const std::tuple<QStringList, QString, int, QString> rows[] = {
        {{}, slow + "level 9; until level 3; do sleep 0.01; done", 0, ""},
        {{}, OZ_COMMAND " watch battery --count 1 --for 30s | grep -w 'level.*3'", 0, ""},
        {{}, slow + OZ_COMMAND " sim battery level 50; level 50", 0, ""},
        {{"--wait-for", "request"},
            slow + "level 9; level 9; " OZ_COMMAND " call led flash 1 >&2; until level 3; do :; done", 0, ""},
        {{"--until-played", "--wait-limit", "50ms"}, "exec sleep 100", 0,
            "ozdevice: the command opened no object within 0.05 s; the scenario begins without it\n"},
        {{}, "true", 0, never + "opened no object\n"},
        {{}, "exit 5", 5, never + "opened no object\n"},
        {{"--until-played"}, "true", 1, never + "opened no object\n"},
        {{"--wait-for", "request", "--junit", report}, slow + "level 9", 1, never + "requested nothing\n"},
        {{"--wait-for", "no"}, "true", 2,
            "ozdevice: --wait-for: no not in {open,request,none} (see ozdevice run --help)\n"},
    };
    for (const auto &[options, script, status, errors] : rows) {
        const Result result = run(QStringList{"run", "--scenario", root.file("/s.json"), "--speed", "max"}
            + options + QStringList{"--", "bash", "-c", script});
        EXPECT_EQ(result.status, status) << script.toStdString() << result.output.toStdString();
        EXPECT_EQ(result.errors, errors) << script.toStdString();
    }
    QFile file(report);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("<failure message=\"the scenario was never begun: "));
}

TEST_F(CommandTest, RunOffersTheModuleForQml)
{
    const auto paths = [](const QString &before) {
        qputenv("QML_IMPORT_PATH", before.toLocal8Bit());
        return run({"run", "--", "sh", "-c", "echo $QML_IMPORT_PATH"}).output.trimmed().split(':');
    };
    const QString own = paths("").value(0);
    EXPECT_TRUE(QFile::exists(own + "/oz/device/qmldir")) << own.toStdString();
    EXPECT_EQ(paths("/mine:/other"), (QStringList{"/mine", "/other", own}));
    EXPECT_EQ(paths(own + ":/mine"), (QStringList{own, "/mine"}));
}

TEST_F(CommandTest, APlayingScenarioIsFollowedStoppedAndListed)
{
    root.place("/s.json", R"({"steps": ["battery level 3", {"wait": 100}, "battery level 2"]})");
    const QString file = root.file("/s.json");
    EXPECT_EQ(run({"play", file, "--check"}), (Result{0, "", ""})) << "without a phone that runs";
    root.place("/tv.json",
        R"({"phone": {"miracast": {"sinks": {"wall": {}}}}, "steps": ["miracast sink-goes tv"]})");
    EXPECT_EQ(run({"play", root.file("/tv.json"), "--check"}),
        (Result{1, "",
            "ozdevice: " + root.file("/tv.json")
                + ":1: steps[0]: miracast sink-goes: expected one of wall, found 'tv'\n"}))
        << "the phone is the scenario's";
    const Phone phone;
    EXPECT_EQ(run({"play", file, "--check"}), (Result{0, "", ""}));
    EXPECT_EQ(run({"play", "--stop"}), (Result{1, "", "ozdevice: no scenario is playing\n"}));
    QProcess playing;
    playing.start(Command, {"play", file, "--json"});
    QByteArray lines;
    ASSERT_TRUE(waitUntil([&] {
        playing.waitForReadyRead(10);
        lines += playing.readAllStandardOutput();
        return lines.count('\n') == 2;
    }));
    EXPECT_EQ(QJsonDocument::fromJson(lines.split('\n')[0]).object().value("place").toString(), file + ":1");
    EXPECT_EQ(run({"play", file}),
        (Result{1, "", "ozdevice: a scenario is playing already; `ozdevice play --stop` ends it\n"}));
    ::kill(pid_t(playing.processId()), SIGINT);
    ASSERT_TRUE(playing.waitForFinished());
    EXPECT_EQ(playing.exitCode(), 128 + SIGINT);
    EXPECT_EQ(run({"play", file, "--speed", "max"}).status, 0);
    const QString values = run({"play", "--values"}).output;
    EXPECT_TRUE(values.contains(QRegularExpression("\n  battery\\.level +2 +the charge, in %")))
        << values.toStdString();

    QProcess daemon;
    qputenv("OZ_DEVICE_ROOT", root.file("/second").toLocal8Bit());
    daemon.start(OZ_DAEMON, {"--simulated", "--scenario", "trane-ride"});
    ASSERT_TRUE(daemon.waitForFinished());
    EXPECT_EQ(daemon.exitCode(), 1);
    EXPECT_TRUE(daemon.readAllStandardError().startsWith(
        "ozdeviced: there is no file and no installed scenario 'trane-ride'; installed are "));
    {
        const Phone traveller({"--scenario", "train-ride"});
        EXPECT_EQ(run({"play", "--stop"}), (Result{0, "", ""})) << "an installed one, by its name";
    }
    qputenv("OZ_DEVICE_ROOT", root.file("").toLocal8Bit());
}

// Text from strangers is in names of files, in objects, in the phone's file, in scenarios and on the command
// line.
TEST_F(CommandTest, EscapesControlCharactersOnTheTerminalAndInTheLog)
{
    const QString hostile = QString("x\033[2Jy\rz\nozdevice: all is well\u009b1m\u202e\u2028\u007f\u2066");
    const QString json =
        QString::fromUtf8(QJsonDocument(QJsonObject{{"name", hostile}}).toJson(QJsonDocument::Compact))
            .section(':', 1)
            .chopped(1);
    root.place("/phone.json",
        ("{\"hardware\": {\"device-name\": " + json + "}, \"wifi-direct\": {\"peers\": {\"tv\": {\"name\": "
            + json + "}}}, \"data-profile\": {\"profiles\": {\"internet\": {}}}}")
            .toUtf8());
    root.place("/wrong.json", ("{\"sdcard\": {" + json + ": 1}}").toUtf8());
    root.place("/s.json",
        ("{\"description\": " + json + ", \"steps\": [{\"say\": " + json
            + "}, {\"expect\": \"hardware.name == 'a'\", \"within\": 0.1}]}")
            .toUtf8());
    root.place("/w.json", ("{\"steps\": [{" + json + ": 1}]}").toUtf8());
    QProcess daemon;
    daemon.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated", "--phone", root.file("/phone.json")});
    ASSERT_TRUE(daemon.waitForStarted());
    EXPECT_EQ(run({"wait-ready", "--timeout", "20s"}).status, 0);
    root.place("/pps/strange/" + QString(hostile).remove('/'),
        "@a\nb::" + hostile.section('\n', 0, 0).toUtf8() + '\n');
    EXPECT_EQ(run({"pps", "set", "strange/object", "b:c:" + QString("q\\n\\x1b[2Jr\xc2\x9b")}).status, 0);

    const QList<QStringList> calls{{"show"}, {"show", "--json"}, {"list"}, {"status"}, {"status", "--json"},
        {"doctor"}, {"doctor", "--json"}, {"pps", "ls", "strange"}, {"pps", "get", "strange/object"},
        {"pps", "get", "strange/object", "b"}, {"pps", "get", "strange/object", "--json"},
        {"pps", "get", "strange/" + hostile}, {"pps", "get", "strange/object", hostile},
        {"sim", "hardware", "name", hostile}, {"sim", "battery", hostile}, {"sim", hostile},
        {"sim", "--help"}, {"sim", "wifi-direct", "peer-goes", hostile}, {"show", hostile},
        {"describe", hostile}, {"call", "led", hostile}, {"set", "led", "color", hostile}, {hostile},
        {"play", "--check", root.file("/s.json")}, {"play", "--check", root.file("/w.json")},
        {"play", root.file("/s.json")}, {"play", root.file("/s.json"), "--json"}, {"play", hostile},
        {"run", "--phone", root.file("/wrong.json"), "--", "true"}, {"run", "--", hostile},
        {"record", root.file("/r.json"), "--only", hostile}, {"watch", "--for", "10ms"}, {"watch", hostile},
        {"pps", "watch", "strange/object", "--for", "10ms"}};
    const QRegularExpression raw(
        "[\\x{00}-\\x{08}\\x{0b}-\\x{1f}\\x{7f}-\\x{9f}\\x{2028}-\\x{202e}\\x{2066}-\\x{2069}]");
    QString all;
    for (const QStringList &call : calls) {
        const Result result = run(call);
        const QString text = result.output + result.errors;
        EXPECT_FALSE(text.contains(raw)) << call.join(' ').toStdString() << ": " << text.toStdString();
        EXPECT_FALSE(text.contains("\nozdevice: all is well")) << call.join(' ').toStdString();
        all += text;
    }
    EXPECT_GT(all.count("\\u202e"), calls.size() / 2) << "the texts are shown in spite of that";
    // The daemon's log, with the error of a malformed phone's file.
    root.place("/phone.json", ("{\"sdcard\": {" + json + ": 1}}").toUtf8());
    ::kill(pid_t(daemon.processId()), SIGHUP);
    QByteArray told;
    EXPECT_TRUE(waitUntil([&] {
        daemon.setReadChannel(QProcess::StandardError);
        told += daemon.readAllStandardError();
        return told.contains("everything goes on as it was");
    }));
    EXPECT_FALSE(QString::fromUtf8(told).contains(raw)) << told.toStdString();
    EXPECT_FALSE(told.contains("\nozdevice: all is well"));
    daemon.terminate();
    daemon.waitForFinished();
}

TEST_F(CommandTest, ProcessesThatACommandHasStartedEndWithIt)
{
    root.place("/s.json", R"({"steps": [{"expect": "battery.level == 33", "within": 10}]})");
    const QString starts = "setsid sleep 100 & echo $! >>" + root.file("/pids")
        + "; bash -c 'trap \"\" TERM; sleep 100; sleep 100' & echo $! >>" + root.file("/pids");
    EXPECT_EQ(run({"run", "--", "bash", "-c", starts}).status, 0);
    EXPECT_EQ(run({"run", "--scenario", root.file("/s.json"), "--wait-for", "none", "--until-played", "--",
                      "bash", "-c", starts + "; " OZ_COMMAND " sim battery level 33; wait"})
                  .status,
        0);
    QFile file(root.file("/pids"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArrayList pids = file.readAll().trimmed().split('\n');
    EXPECT_EQ(pids.size(), 4);
    for (const QByteArray &pid : pids) {
        QFile stat("/proc/" + pid + "/stat");
        EXPECT_TRUE(!stat.open(QIODevice::ReadOnly) || stat.readAll().contains(") Z ")) << pid.toStdString();
    }
}

TEST_F(CommandTest, ARecordingMadeWhileACommandRunsCanBePlayed)
{
    const QString file = root.file("/r.json");
    const QString script = OZ_COMMAND " sim battery level 33; exit 4";
    {
        const Phone phone;
        EXPECT_EQ(run({"record", file, "--", "bash", "-c", script}).status, 4);
        EXPECT_EQ(run({"record", root.file("/none/r.json"), "--for", "1s"}).status, 1);
        const Result never = run({"record", file + "2", "--", "/none/at/all"});
        EXPECT_EQ(never.status, 127);
        EXPECT_TRUE(never.errors.startsWith("ozdevice: /none/at/all: "));
        EXPECT_FALSE(QFile::exists(file + "2")) << "the command never ran";
        root.place("/private.json", "{}");
        EXPECT_EQ(run({"record", root.file("/private.json"), "--keep-identifiers", "--", "true"}).status, 0);
        EXPECT_EQ(root.mode("/private.json"), 0600u);
        const Result led = run({"record", file + "2", "--only", "battery,led", "--for", "1s"});
        EXPECT_EQ(led.status, 2);
        EXPECT_TRUE(led.errors.startsWith("ozdevice: led cannot be recorded; what can is sdcard, "))
            << led.errors.toStdString();
    }
    const Result played =
        run({"run", "--scenario", file, "--wait-for", "none", "--until-played", "--", "sleep", "100"});
    EXPECT_EQ(played.status, 0) << played.errors.toStdString();
    EXPECT_TRUE(played.output.contains("battery level 80\n") && played.output.contains("battery level 33\n"))
        << played.output.toStdString();
}

TEST_F(CommandTest, AReportSaysWhatTheDeviceWasAndPlaysTheSameOnAnotherPhone)
{
    const QString file = root.file("/bug.json");
    root.place("/phone.json", R"({"hardware": {"device-name": "AnnSecret", "serial-number": "SN-SECRET"},
        "wifi-direct": {"interface": "wlx0a0b0c0d0e01",
            "peers": {"tv": {"name": "BobSecret", "address": "0a:0b:0c:0d:0e:0f"}}}})");
    const QString happens =
        OZ_COMMAND " sim battery level 33; " OZ_COMMAND " sim sdcard remove; " OZ_COMMAND
                   " sim wifi-direct sight tv; " OZ_COMMAND " sim wifi-direct group owner tv";
    const QStringList shown{"show", "battery", "sdcard", "radio", "display", "--json"};
    QString end;
    {
        const Phone phone({"--phone", root.file("/phone.json")});
        const Result recorded = run({"record", file, "--report", "--note",
            "No picture\non BOBSECRET (0A:0B:0C:0D:0E:0F) of SN-SECRET", "--", "bash", "-c", happens});
        EXPECT_EQ(recorded.status, 0) << recorded.errors.toStdString();
        end = run(shown).output;
        EXPECT_FALSE(end.isEmpty());
    }
    QFile written(file);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(written.readAll());
    for (const char *identifier : {"secret", "0a:0b:0c:0d:0e:0f", "0a0b0c"})
        EXPECT_FALSE(text.contains(identifier, Qt::CaseInsensitive)) << identifier << text.toStdString();
    const QString plays =
        QString(OZ_COMMAND " play %1 >/dev/null && " OZ_COMMAND " %2").arg(file, shown.join(' '));
    EXPECT_EQ(run({"run", "--phone", file, "--", "bash", "-c", plays}).output, end);

    const QString about = run({"play", file, "--about"}).output;
    EXPECT_TRUE(about.startsWith("No picture on peer-1 (02:00:5e:00:00:01) of id-2\nRecorded on "))
        << about.toStdString();
    for (const char *line :
        {"\nlibozdevice +1[.]", "\nozdeviced +1[.]", "\nkernel +linux ", "\nbattery +simulated +works\n",
            "\ndisplay +simulated +works +0, 1\n", "\ndoctor found nothing wrong\n"})
        EXPECT_TRUE(about.contains(QRegularExpression(line))) << line << about.toStdString();
    const auto json =
        QJsonDocument::fromJson(run({"play", file, "--about", "--json"}).output.toUtf8()).object();
    EXPECT_EQ(at(json, {"report", "facilities", "led", "source"}), "simulated");
    const Result other = run({"play", "low-battery", "--about"});
    EXPECT_EQ(other.output.count('\n'), 1) << "one without a report: " << other.output.toStdString();
    root.place("/none.json", "{}");
    EXPECT_EQ(run({"play", root.file("/none.json"), "--about"}).status, 1);
    root.place(
        "/odd.json", R"({"steps": [], "report": {"note": null, "qt": [null], "problems": [null, 1, "x"]}})");
    EXPECT_TRUE(run({"play", root.file("/odd.json"), "--about"}).output.endsWith("\n1\nx\n"));
    root.place("/deep.json",
        R"({"steps": [], "report": {"note": )" + QByteArray(80, '[') + QByteArray(80, ']') + "}}");
    EXPECT_TRUE(run({"play", root.file("/deep.json"), "--about"})
                    .errors.contains("the answer cannot be sent: attribute 'dat'"));

    // What was recorded until the services died is kept.
    const QString dies = "kill -9 $(" OZ_COMMAND " pps get system/ozdeviced/status pid); sleep 100";
    EXPECT_NE(run({"run", "--", OZ_COMMAND, "record", file, "--report", "--", "bash", "-c", dies}).status, 0);
    EXPECT_TRUE(
        run({"play", file, "--about"}).output.endsWith("\nthe services went away during the recording\n"));
}

TEST_F(CommandTest, TopShowsThePhoneAsItChanges)
{
    const Phone phone;
    EXPECT_EQ(run({"top"}).status, 2) << "without a terminal";
    for (const bool hasColors : {true, false}) {
        EXPECT_EQ(run({"sim", "battery", "level", "80"}).status, 0);
        int terminal = -1;
        const winsize size{24, 80, 0, 0};
        const pid_t console = ::forkpty(&terminal, nullptr, nullptr, &size);
        ASSERT_GE(console, 0) << "no terminal to be had";
        if (console == 0) {
            ::setenv("TERM", "xterm", 1);
            ::setenv("NO_COLOR", hasColors ? "" : "1", 1);
            ::execl(OZ_COMMAND, OZ_COMMAND, "top", nullptr);
            ::_exit(127);
        }
        ::fcntl(terminal, F_SETFL, O_NONBLOCK);
        QByteArray shown;
        const auto shows = [&](const QByteArray &text) {
            return waitUntil([&] {
                char buffer[4096];
                for (ssize_t bytes = 0; (bytes = ::read(terminal, buffer, sizeof buffer)) > 0;)
                    shown.append(buffer, bytes);
                return shown.contains(text);
            });
        };
        const auto press = [&](const QByteArray &keys) {
            shown.clear();
            EXPECT_EQ(::write(terminal, keys.constData(), std::size_t(keys.size())), keys.size());
        };
        ASSERT_TRUE(shows("Discharging") && shows("miracast") && shows("q: quit")) << shown.toStdString();
        EXPECT_TRUE(shows("%") && shows("dBm"));
        EXPECT_FALSE(shown.contains("network lo")) << "the interface belongs to this machine";
        EXPECT_EQ(QString(shown).contains(QRegularExpression("\x1b\\[([0-9;]*;)?3[0-7]m")), hasColors);
        shown.clear();
        EXPECT_EQ(run({"sim", "battery", "level", "42"}).status, 0);
        EXPECT_TRUE(shows("42"));
        press("\x1bOB "); // down to the battery, and all of its values
        EXPECT_TRUE(shows("fullChargeCapacity") && shows("back")) << shown.toStdString();
        press("q");
        EXPECT_TRUE(shows("phone under") && shows("miracast")) << shown.toStdString();
        const winsize small{10, 40, 0, 0};
        shown.clear();
        EXPECT_EQ(::ioctl(terminal, TIOCSWINSZ, &small), 0);
        EXPECT_TRUE(shows("up down") && shows("all values") && shows("q: quit"))
            << "the foot needs several lines";
        EXPECT_TRUE(shows("sdcard"));
        EXPECT_FALSE(shown.contains("miracast")) << "there is no room for it";
        EXPECT_TRUE(shows(" below")) << shown.toStdString();
        press("\x1bOF"); // the end
        EXPECT_TRUE(shows("above") && shows("miracast")) << shown.toStdString();
        press("q");
        int status = 0;
        EXPECT_EQ(::waitpid(console, &status, 0), console);
        EXPECT_EQ(status, 0);
        ::close(terminal);
    }
}

} // namespace
