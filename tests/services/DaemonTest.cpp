#include "services/Services.hpp"

#include "daemon/Daemon.hpp"
#include "source/Error.hpp"

#include <oz/device/SdCardInfo.hpp>

#include <QFile>
#include <QProcess>

#include <csignal>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace oz;
using namespace oz::services;
using namespace oz::harness;

namespace {

const QString CardPath = "/pps/system/filesystem/removable/sdcard";

using DaemonTest = DeviceTest;

TEST_F(DaemonTest, ReadsOneLineAFacilityAndTellsWhatIsWrongWhere)
{
    const auto parse = [&](const QByteArray &text) {
        root.place("/conf", text);
        try {
            (void)Configuration::parseFile(root.file("/conf"));
        } catch (const Error &error) {
            return QString(error.what()).remove(root.file(""));
        }
        return QString();
    };
    EXPECT_EQ(parse("# all simulated\n\nsdcard = simulated # as it is\nphone = /my/phone.json\n"), QString());
    EXPECT_EQ(Configuration::parseFile(root.file("/conf")).phoneFile, "/my/phone.json");
    EXPECT_EQ(
        parse("\nsdcard simulated\n"), "/conf:2: expected 'FACILITY = SOURCE', found 'sdcard simulated'");
    const std::pair<const char *, const char *> wrong[] = {
        {"sdcard = real\n", "/conf:1: sdcard has no source 'real'; it has simulated, udisks2, auto, none"},
        {"sdcard = \033[1mreal\n",
            "/conf:1: sdcard has no source '\\u001b[1mreal'; it has simulated, udisks2, auto, none"},
        {"display = xrandr screen=1\n",
            "/conf:1: display = xrandr has no option 'screen=1'; it has display="},
        {"sdcard = udisks2 device=\n", "/conf:1: sdcard = udisks2: the option 'device=' wants a value"},
        {"wifi-direct = none\nwifidirect = auto\n", "/conf:2: 'wifi-direct' stands twice, first in line 1"},
        {"trusted-group = nobody-at-all\n", "/conf:1: there is no group 'nobody-at-all'"},
    };
    for (const auto &[text, problem] : wrong)
        EXPECT_EQ(parse(text), problem);
    EXPECT_TRUE(
        parse("toaster = simulated\n").startsWith("/conf:1: unknown facility 'toaster'; known are sdcard"));
}

TEST_F(DaemonTest, OneServesARootAndAKilledOneIsReplaced)
{
    QProcess first;
    first.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated"});
    awaitDaemon(&first);

    QProcess second;
    second.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated"});
    ASSERT_TRUE(second.waitForFinished());
    EXPECT_EQ(second.exitCode(), 1);
    EXPECT_EQ(second.readAllStandardError(),
        "ozdeviced: another ozdeviced (process " + QByteArray::number(first.processId()) + ") serves "
            + root.file("/pps").toLocal8Bit() + '\n');

    first.kill();
    first.waitForFinished();
    PpsObject control("/pps/system/ozdeviced/control");
    EXPECT_FALSE(control.open(PpsOpenMode::Publish));
    second.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated"});
    awaitDaemon(&second);
    second.terminate();
    ASSERT_TRUE(second.waitForFinished());
    EXPECT_EQ(second.exitCode(), 0);
    PpsObject card(CardPath);
    EXPECT_TRUE(card.open(PpsOpenMode::Subscribe)) << "what was published stays";
    EXPECT_FALSE(QFile::exists(root.file("/pps/system/ozdeviced/status")));
}

TEST_F(DaemonTest, TellsTheServiceManagerWhenEverythingIsPublished)
{
    const QByteArray socketPath = root.file("/notify").toLocal8Bit();
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(socketPath.size(), qsizetype(sizeof address.sun_path));
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    QProcess daemon;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("NOTIFY_SOCKET", QString::fromLocal8Bit(socketPath));
    daemon.setProcessEnvironment(environment);
    daemon.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated"});
    char message[64] = "";
    ASSERT_TRUE(waitUntil([&] {
        return ::recv(socket, message, sizeof message - 1, MSG_DONTWAIT) > 0
            || daemon.state() == QProcess::NotRunning;
    }));
    EXPECT_STREQ(message, "READY=1");
    PpsObject control("/pps/system/ozdeviced/control");
    EXPECT_TRUE(control.open(PpsOpenMode::Publish));
    daemon.terminate();
    daemon.waitForFinished();
    ::close(socket);
}

TEST_F(DaemonTest, WhatFindsNoRoomIsPublishedOnceThereIsSomeAndNobodySaysThatItIsBefore)
{
    // A file system of its own, which is full when the daemon starts.
    if (const QString problem = namespaceProblem({"--map-root-user", "--mount"}); !problem.isEmpty())
        GTEST_SKIP() << "a file system of its own needs user namespaces: " << problem.toStdString();
    const QString onFullDisk = R"(mount -t tmpfs -o size=1m,mode=755 none "$OZ_DEVICE_ROOT" &&
        { head -c 2m /dev/zero >"$OZ_DEVICE_ROOT/fill" 2>/dev/null; exec "$@"; })";
    QProcess daemon;
    daemon.start(
        "unshare", {"-rm", "sh", "-c", onFullDisk, "sh", OZ_DAEMON, "--config", "/dev/null", "--simulated"});
    ASSERT_TRUE(daemon.waitForStarted());
    const auto told = [&](const char *text) {
        daemon.setReadChannel(QProcess::StandardError);
        return waitUntil([&] { return daemon.peek(100'000).contains(text); });
    };
    ASSERT_TRUE(told("No space left on device; it is tried again"))
        << daemon.readAllStandardError().toStdString();
    const QString within = QStringLiteral("/proc/%1/root").arg(daemon.processId()) + root.file("");
    qputenv("OZ_DEVICE_ROOT", within.toLocal8Bit());
    PpsObject control("/pps/system/ozdeviced/control");
    EXPECT_FALSE(control.open(PpsOpenMode::Publish)) << "it is not ready yet";
    EXPECT_FALSE(daemon.peek(100'000).contains("serving"));
    ASSERT_TRUE(QFile::remove(within + "/fill"));
    EXPECT_TRUE(waitUntil([&] { return control.open(PpsOpenMode::Publish); }));

    QFile fill(within + "/fill");
    ASSERT_TRUE(fill.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (fill.write(QByteArray(4096, 'x')) == 4096) { }
    EXPECT_TRUE(simProblem("sdcard unmount").endsWith(CardPath + ": No space left on device"));
    EXPECT_EQ(device::SdCardInfo().state(), device::SdCardState::Mounted);
    ASSERT_TRUE(fill.remove());
    EXPECT_TRUE(waitUntil([] { return device::SdCardInfo().state() == device::SdCardState::Unmounted; }));
    daemon.terminate();
    daemon.waitForFinished();
}

TEST_F(DaemonTest, TheInstalledConfigurationNamesEveryFacility)
{
    QFile file(OZ_CONFIGURATION);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    for (const Facility &facility : facilities())
        EXPECT_TRUE(text.contains('\n' + facility.name.toUtf8() + " = auto\n"))
            << facility.name.toStdString();
    EXPECT_NO_THROW((void)Configuration::parseFile(OZ_CONFIGURATION));
}

TEST_F(DaemonTest, SurvivesMalformedRequestsAndRefusesStrangers)
{
    const Daemon daemon(Configuration::simulated(), JsonNode::emptyMap());
    ControlClient control("/pps/system/ozdeviced/control");
    const std::tuple<QByteArray, const char *> rows[] = {
        {"garbage",
            "@control\nerr:n:22\nerrstr::line 1: neither 'name:qualifier:value' nor '-name'\nres::\n"},
        {"id:n:1\n", "@control\nerr:n:22\nerrstr::the request has no 'msg'\nid:n:1\nres::\n"},
        {"msg::sim\ndat::none\n", "@control\nerr:n:22\nerrstr::the simulated phone has no ''; it has "},
        {"msg::sim\nid::x\ndat:json:{\"facility\":\"sdcard\",\"verb\":\"busy\"}\n",
            "@control\nid::x\nres::sim\n"},
    };
    for (const auto &[request, expected] : rows) {
        const QByteArray answer = control.ask(request);
        EXPECT_TRUE(answer.startsWith(expected)) << answer.toStdString();
    }
    EXPECT_EQ(device::SdCardInfo().activity(), device::SdCardActivity::Busy);
    EXPECT_EQ(root.mode("/pps/system/ozdeviced/control"), 0600u);
}

} // namespace
