#include "services/Services.hpp"

#include "daemon/Daemon.hpp"
#include "phone/SimulatedPhone.hpp"
#include "publishing/StateStore.hpp"

#include <oz/device/DisplayInfo.hpp>

#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

// Other users, and accidents, tamper with the daemon's files and objects.

using namespace oz;
using namespace oz::services;
using namespace oz::harness;

namespace {

const QString State = "/pps/.ozdeviced";

using StrangersTest = DeviceTest;

// The files in a folder, and below it.
QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

TEST_F(StrangersTest, TheDaemonWritesNothingThroughALinkInItsFolders)
{
    const QString elsewhere = root.file("/elsewhere");
    const std::tuple<QString, bool> links[] = {
        {"/pps", false}, {"/pps/.ozdeviced", true}, {"/pps/.ozdeviced.lock", false}, {"/pps/system", false}};
    for (const auto &[link, starts] : links) {
        ASSERT_TRUE(QDir(root.file("/pps")).removeRecursively() || QFile::remove(root.file("/pps")));
        ASSERT_TRUE(QDir().mkpath(elsewhere) && QDir().mkpath(QFileInfo(root.file(link)).path()));
        ASSERT_TRUE(QFile::link(elsewhere, root.file(link)));
        QProcess daemon;
        daemon.start(OZ_DAEMON, {"--config", "/dev/null", "--simulated"});
        QByteArray told;
        ASSERT_TRUE(waitUntil([&] {
            daemon.setReadChannel(QProcess::StandardError);
            told += daemon.readAllStandardError();
            return daemon.state() == QProcess::NotRunning || told.contains("serving");
        })) << link.toStdString();
        EXPECT_EQ(daemon.state() == QProcess::Running, starts) << link.toStdString() << told.toStdString();
        EXPECT_TRUE(told.contains("link")) << link.toStdString() << told.toStdString();
        daemon.kill();
        daemon.waitForFinished();
        EXPECT_EQ(entriesOf(elsewhere), QStringList()) << link.toStdString();
    }
}

TEST_F(StrangersTest, NobodyElseWritesIntoTheTreeWhateverTheUmask)
{
    for (const char *mask : {"000", "077"}) {
        QDir(root.file("/pps")).removeRecursively();
        QProcess daemon;
        daemon.start("sh",
            {"-c", QString("umask %1; exec \"$@\"").arg(mask), "sh", OZ_DAEMON, "--config", "/dev/null",
                "--simulated"});
        awaitDaemon(&daemon);
        for (const char *folder : {"/pps", "/pps/services", "/pps/services/led", "/dev", "/dev/power"})
            EXPECT_EQ(root.mode(folder), 0755u) << folder << mask;
        EXPECT_EQ(root.mode(State), 0700u);
        daemon.terminate();
        daemon.waitForFinished();
    }
}

// Values that a damaged file might have anywhere.
const QVariantList &damages()
{
    static const QVariantList values{-1, 99'999'999'999.0, 1.5, true, false, "x", QString(300, 'a'),
        QVariant(), QVariantList(), QVariantList{-1, "x", QVariantList()}, QVariantMap(),
        QVariantMap{{"x", -1}}};
    return values;
}

// The maps that differ from one in one value, however deep it lies, each with the names of the way there. Of
// several instances, which are alike, one is enough.
std::vector<std::pair<QVariantMap, QStringList>> damagedOf(const QVariantMap &map, bool isOfInstances = false)
{
    std::vector<std::pair<QVariantMap, QStringList>> all;
    const auto with = [&](const QString &key, const QVariant &value, QStringList below) {
        QVariantMap damaged = map;
        damaged.insert(key, value);
        all.emplace_back(damaged, below << key);
    };
    for (auto each = map.cbegin(); each != map.cend(); ++each) {
        for (const QVariant &damage : damages())
            with(each.key(), damage, {});
        if (each->typeId() == QMetaType::QVariantMap) {
            const QVariantMap members = each->toMap();
            const bool areMaps = !members.isEmpty() && members.first().typeId() == QMetaType::QVariantMap;
            for (const auto &[damaged, way] : damagedOf(members, areMaps))
                with(each.key(), damaged, way);
        }
        const QVariantList list = each->toList();
        for (qsizetype i = 0; i < list.size(); ++i) {
            for (const auto &[damaged, way] : damagedOf(list[i].toMap())) {
                QVariantList changed = list;
                changed[i] = damaged;
                with(each.key(), changed, way);
            }
        }
        if (isOfInstances)
            break;
    }
    return all;
}

TEST_F(StrangersTest, ADamagedStateFileCostsWhatIsDamagedAndKeepsNoPhoneFromStarting)
{
    // A phone that has something to save everywhere.
    const JsonNode file = JsonNode::parseFile(OZ_PHONE_FILE);
    StateStore intact;
    {
        SimulatedPhone phone(file, phoneParts(), intact);
        phone.run("wifi-direct", {"group", "owner", "tv"});
        phone.run("miracast", {"session", "playing", "tv"});
        phone.run("display", {"add", "7", "beamer", "800", "600"});
        phone.run("battery", {"temperature", "21.5"});
    }
    int count = 0;
    for (const PartDescription &part : phoneParts()) {
        const QString name = "phone-" + part.name;
        for (const auto &[damaged, way] : damagedOf(intact.load(name))) {
            StateStore store = intact;
            store.save(name, damaged);
            SimulatedPhone phone(file, phoneParts(), store);
            const QStringList told = log.take();
            // It goes on from what is whole, which it can save and take up again.
            StateStore again = store;
            const SimulatedPhone next(file, phoneParts(), again);
            EXPECT_EQ(log.take(), QStringList()) << part.name.toStdString() << way.join('.').toStdString();
            EXPECT_EQ(again.load(name), store.load(name));
            const auto json = [](const QVariantMap &map) { return QJsonObject::fromVariantMap(map); };
            if (json(store.load(name)) != json(damaged)) {
                // Where Wi-Fi Direct is off it is the group that does not fit.
                const bool isOff = damaged.value(way.last()) == QVariant(false)
                    && (way == QStringList{"enabled"} || way == QStringList{"supported"});
                const QString lost = isOff ? "group" : way.last();
                EXPECT_EQ(told.filter(QRegularExpression(
                                          name + ": '(.*')?" + lost + "[.'].* ignored, as it does not fit"))
                              .size(),
                    1)
                    << name.toStdString() << way.join('.').toStdString() << told.join('\n').toStdString();
            }
            // A part may need what another has lost: a session its display.
            EXPECT_LE(told.size(), 2) << told.join('\n').toStdString();
            ++count;
        }
    }
    EXPECT_GT(count, 500);
}

TEST_F(StrangersTest, ADaemonStartsOverStateThatIsNoJsonOrBelongsToSomebodyElse)
{
    auto daemon = std::make_unique<Daemon>(Configuration::simulated(), JsonNode::emptyMap());
    daemon.reset();
    const QString display = State + "/phone-display.json";
    root.place(display, R"({"displays":[{"id":-1,"name":"x","width":10,"height":10}]})");
    root.place(State + "/phone-battery.json", "{\"level\":");
    root.place(
        State + "/led.json", R"({"requests":[{"id":7,"process":-1,"color":[],"started":1e300},3,"x"]})");
    daemon = std::make_unique<Daemon>(Configuration::simulated(), JsonNode::emptyMap());
    EXPECT_EQ(device::DisplayInfo().displayName(), "panel");
    QStringList told = log.take();
    EXPECT_EQ(told.filter("phone-display.json: 'displays' ignored, as it does not fit").size(), 1);
    EXPECT_EQ(told.filter("phone-battery.json is ignored: unterminated object").size(), 1);
    EXPECT_EQ(told.size(), 2);
    daemon.reset();
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    ASSERT_EQ(::chown(root.file(display).toLocal8Bit().constData(), 65534, 65534), 0);
    daemon = std::make_unique<Daemon>(Configuration::simulated(), JsonNode::emptyMap());
    EXPECT_EQ(log.take().filter("phone-display.json is ignored: Operation not permitted").size(), 1);
}

} // namespace
