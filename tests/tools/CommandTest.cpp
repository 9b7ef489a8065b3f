// The installed programs as a user has them: the command, and the daemon that it starts.

#include "harness/Testing.hpp"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <csignal>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::testing;

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
    EXPECT_EQ(run({"show", "sdcard"}).output,
        "sdcard\n  state     SdCardState     Mounted\n  activity  SdCardActivity  Idle\n");
    EXPECT_EQ(QJsonDocument::fromJson(run({"show", "sdcard", "--json"}).output.toUtf8()).object(),
        (QJsonObject{{"sdcard",
            QJsonObject{{"state", QJsonObject{{"type", "SdCardState"}, {"value", "Mounted"}}},
                {"activity", QJsonObject{{"type", "SdCardActivity"}, {"value", "Idle"}}}}}}));

    QProcess watching;
    watching.start(Command, {"watch", "sdcard", "--count", "4"});
    QProcess watchingJson;
    watchingJson.start(Command, {"watch", "sdcard", "--json", "--typed", "--count", "2"});
    const auto signalled = [&] {
        return watching.state() == QProcess::NotRunning && watchingJson.state() == QProcess::NotRunning;
    };
    // Until both have opened the object, and then once more, the card comes and goes.
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
    const QJsonObject first = QJsonDocument::fromJson(watchingJson.readLine()).object();
    EXPECT_EQ(first.keys(), (QStringList{"arguments", "facility", "signal", "signature", "time"}));
    EXPECT_TRUE(first.value("signature").toString().contains("oz::device::"));
}

TEST_F(CommandTest, RefusesWrongWordsInOneLineThatSaysWhatWasExpected)
{
    const Phone phone;
    const std::tuple<QStringList, int, const char *> rows[] = {
        {{"show", "sdkard"}, 2, "ozdevice: unknown facility 'sdkard'; known are sdcard"},
        {{"call", "sdcard", "eject"}, 2, "ozdevice: sdcard: no method 'eject'; it has none"},
        {{"set", "sdcard", "size", "1"}, 2,
            "ozdevice: sdcard has no property 'size'; it has state and activity"},
        {{"set", "sdcard", "state", "Busy"}, 2, "ozdevice: sdcard: the property 'state' is read-only"},
        {{"watch", "--for", "soon"}, 2, "ozdevice: 'soon' is no time; expected 500ms, 10s, 2m or seconds"},
        {{"sim", "sdcard", "eject"}, 1, "ozdevice: sdcard has no 'eject'; it has mount, unmount, busy, idle"},
        {{"pps", "get", "nothing/there"}, 3, "ozdevice: /pps/nothing/there: No such file or directory"},
        {{"pps", "get", "system/filesystem/removable/sdcard", "size"}, 3,
            "ozdevice: /pps/system/filesystem/removable/sdcard: no attribute 'size'; it has busy and "
            "mounted"},
        {{"pps", "get", "system/filesystem/removable/sdcard?g=a"}, 1,
            "ozdevice: /pps/system/filesystem/removable/sdcard?g=a: no path of an object, or an unknown "
            "option"},
        {{"pps", "set", "x", "a:n:one"}, 2, "ozdevice: attribute line 1: the value of 'a' is not"},
        {{"show", "network", "--interface", "none"}, 3,
            "ozdevice: network: there is no interface 'none'; there is lo"},
        {{"watch", "network"}, 2, "ozdevice: network: which one? --interface is one of lo"},
        {{"watch", "network", "--interface", "lo", "--every", "0"}, 2,
            "ozdevice: --every is a time longer than 0"},
        {{"call", "led", "flash", "--set", "color"}, 2, "ozdevice: led: color takes one value, one of None"},
        {{"call", "led", "flash", "--set", "color=Brown"}, 2, "ozdevice: led: color is one of None, Red"},
        {{"frobnicate"}, 2, "ozdevice: "},
        {{"run", "--", "/no/such/program"}, 127, "ozdevice: /no/such/program: "},
        {{"run", "--phone", "/no/such/file", "--", "true"}, 1,
            "ozdeviced: /no/such/file: No such file or directory"},
    };
    for (const auto &[words, status, error] : rows) {
        const Result result = run(words);
        EXPECT_EQ(result.status, status) << words.join(' ').toStdString();
        EXPECT_EQ(result.output, QString()) << words.join(' ').toStdString();
        EXPECT_TRUE(result.errors.startsWith(error)) << result.errors.toStdString();
    }
}

TEST_F(CommandTest, SaysWhichObjectIsNotThereOrNotForThisUser)
{
    const Result absent = run({"show", "sdcard"});
    EXPECT_EQ(absent.status, 3);
    EXPECT_EQ(absent.errors,
        "ozdevice: sdcard: /pps/system/filesystem/removable/sdcard?f=mounted+busy: No such file or directory"
        " (is ozdeviced running? try: ozdevice run -- COMMAND)\n");
    EXPECT_EQ(run({"watch", "sdcard"}).status, 3);
    EXPECT_EQ(run({"sim", "sdcard", "mount"}).status, 3);
    EXPECT_EQ(run({"wait-ready", "--timeout", "20ms"}).status, 3);

    root.place("/pps/system/filesystem/removable/sdcard", "@sdcard\n");
    QFile::setPermissions(root.file("/pps/system/filesystem/removable/sdcard"), QFile::WriteOwner);
    EXPECT_EQ(runWithoutPrivileges([] {
        return run({"show", "sdcard"}).errors.contains("Permission denied") ? 3 : 0;
    }),
        3);
}

TEST_F(CommandTest, WaitsForTheEndOfACallThatGoesOn)
{
    root.place("/phone.json", R"({"led": {"on-seconds": 0.05, "off-seconds": 0.05}})");
    auto phone = std::make_unique<Phone>(QStringList{"--phone", root.file("/phone.json")});
    const auto activity = [] { return run({"pps", "get", "services/led/activity"}).output; };
    QProcess watching;
    watching.start(Command, {"watch", "led", "--json"});
    // What is watched from the first flash on.
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
    for (const QStringList &call : {QStringList{"led", "flash", "3"}, {"vibration", "start"}}) {
        const Result result = run(QStringList{"call"} + call);
        EXPECT_EQ(result.status, 3);
        EXPECT_TRUE(result.errors.contains("No such file or directory (is ozdeviced running?"))
            << result.errors.toStdString();
    }
    const Result set = run({"set", "led", "color", "Blue"});
    EXPECT_EQ(set.output, "color = Blue\n");
    EXPECT_TRUE(set.errors.contains("belongs to this one object")) << set.errors.toStdString();
}

TEST_F(CommandTest, ShowsAndWatchesTheCountersOfAnInterface)
{
    EXPECT_TRUE(run({"show", "network"}).output.startsWith("network\n  --interface is one of lo"));
    EXPECT_TRUE(run({"show", "network", "--interface", "lo"})
                    .output.contains("networkInterfaceName  QString     \"lo\"\n"));
    QStringList watch{"watch", "network", "--interface", "lo", "--every", "20ms", "--count", "2"};
    const QStringList lines = run(watch).output.split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0].simplified(), "packetsReceived bytesReceived packetsSent bytesSent");
    EXPECT_EQ(lines[3].simplified().split(' ').size(), 9);
    watch.last() = "1";
    watch.append("--json");
    const QJsonObject row = QJsonDocument::fromJson(run(watch).output.toUtf8()).object();
    EXPECT_EQ(row.keys(), (QStringList{"facility", "interface", "perSecond", "time", "total"}));
    EXPECT_EQ(row.value("total").toObject().keys(),
        (QStringList{"bytesReceived", "bytesSent", "packetsReceived", "packetsSent"}));
}

TEST_F(CommandTest, ACallPrintsWhatFollowsItAndAWaitingOneSaysSoUntilCtrlCBreaksItOff)
{
    root.place("/phone.json", R"({"wifi-direct": {"scan-seconds": 0, "connect-seconds": 0}})");
    const Phone phone({"--phone", root.file("/phone.json")});
    const auto call = [](const QStringList &words) {
        return run(QStringList{"call", "wifidirect"} + words).output;
    };
    EXPECT_EQ(call({"requestScan"}), "0\n");
    ASSERT_TRUE(waitUntil([&] { return call({"visibleDevices"}).contains("02:00:00:00:01:01"); }));
    EXPECT_EQ(call({"requestConnect", "02:00:00:00:01:01", "Any", "RandomPin", "12345670"}), "Success\n");
    ASSERT_TRUE(waitUntil([&] { return call({"ipAddress", "02:00:00:00:01:01"}).contains("192.168.49.1"); }));
    const QString started = call({"requestStartSession"});
    ASSERT_TRUE(started.startsWith("0\nsessionStarted(\"")) << started.toStdString();
    EXPECT_EQ(call({"requestStopSession", started.section('"', 1, 1)}), "0\nsessionStopped()\n");

    // One that blocks dies of the signal, one that waits in its event loop ends with the status that tells
    // it.
    const std::tuple<const char *, const char *, int> rows[] = {
        {"wifi-direct", "wifidirect", SIGINT}, {"miracast", "miracast", (128 + SIGINT) << 8}};
    for (const auto &[part, facility, ending] : rows) {
        EXPECT_EQ(run({"sim", part, "never-answer"}).status, 0);
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
    qputenv("OZ_DEVICE_ROOT", "/nowhere");
    EXPECT_EQ(run({"watch", "wifidirect"}).errors,
        "ozdevice: wifidirect: WiFiDirect: Unable to locate WiFiDirect PPS channel.\n");
    qputenv("OZ_DEVICE_ROOT", root.file("").toLocal8Bit());
}

TEST_F(CommandTest, ACallThatASignalAnswersPrintsWhatComesUntilThenAndFailsWhereThatIsNoSuccess)
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
    }
    root.place("/phone.json", R"({"hardware": {"miracast": false}})");
    const Phone phone({"--phone", root.file("/phone.json")});
    EXPECT_EQ(run({"call", "miracast", "requestScan"}),
        (Result{3, "", "ozdevice: miracast: the device does not support it\n"}));
}

TEST_F(CommandTest, WorksOnTheTreeItself)
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
    EXPECT_EQ(run({"pps", "send", "system/ozdeviced/control", "msg::nonsense", "id:n:7", "--wait"}).output,
        "@control\nerr:n:22\nerrstr::unknown request 'nonsense'; known are describe, "
        "sim\nid:n:7\nres::nonsense\n");
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

TEST_F(CommandTest, TheDemoToursEveryChangeWithoutATerminalAndCleansUpWhenInterrupted)
{
    qputenv("XDG_RUNTIME_DIR", root.file("").toLocal8Bit());
    const Result tour = run({"demo", "--pace", "50ms"});
    EXPECT_EQ(tour.status, 0);
    QStringList changes;
    for (const QString &line : tour.output.split('\n')) {
        if (line.startsWith("      "))
            changes.append(line.simplified());
    }
    EXPECT_EQ(changes,
        (QStringList{"state() Unmounted", "activity() Idle", "stateChanged Mounted", "activityChanged Busy",
            "activityChanged Idle", "stateChanged Unmounted"}));
    QProcess interrupted;
    interrupted.start(Command, {"demo", "--pace", "60s"});
    ASSERT_TRUE(waitUntil([&] { return interrupted.canReadLine(); }));
    ::kill(pid_t(interrupted.processId()), SIGINT);
    ASSERT_TRUE(interrupted.waitForFinished());
    EXPECT_EQ(interrupted.exitCode(), 128 + SIGINT);
    EXPECT_EQ(QDir(root.file("")).entryList({"ozdevice-run-*"}), QStringList());
}

TEST_F(CommandTest, CompletesVerbsFacilitiesPathsAndWhatThePhoneCanBeTold)
{
    const Phone phone;
    const auto complete = [](QStringList words) {
        return run(QStringList{"complete", "--"} + words).output.split('\n', Qt::SkipEmptyParts);
    };
    EXPECT_TRUE(complete({"wa"}).contains("watch"));
    EXPECT_TRUE(complete({"pps", ""}).contains("send"));
    EXPECT_TRUE(complete({"show", ""}).contains("sdcard"));
    EXPECT_TRUE(complete({"show", "--"}).contains("--json"));
    EXPECT_EQ(complete({"sim", "sdcard", ""}), (QStringList{"mount", "unmount", "busy", "idle"}));
    EXPECT_EQ(complete({"call", "led", "flash", "--set", ""}), QStringList{"color="});
    EXPECT_TRUE(complete({"show", "network", "--interface", ""}).contains("lo"));
    EXPECT_EQ(complete({"pps", "get", "/pps/system/filesystem/removable/"}),
        QStringList{"/pps/system/filesystem/removable/sdcard"});
    const QString script = run({"completion", "bash"}).output;
    QProcess bash;
    bash.start("bash",
        {"-c",
            script + "COMP_WORDS=(" + Command
                + " sim sdcard un); COMP_CWORD=3; _ozdevice; echo ${COMPREPLY[@]}"});
    ASSERT_TRUE(bash.waitForFinished());
    EXPECT_EQ(bash.readAllStandardOutput(), "unmount\n");
}

} // namespace
