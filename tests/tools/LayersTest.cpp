// Which folder may include from which: an arrow points down the lists below, and never goes in a circle.

#include "harness/Testing.hpp"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

namespace {

const QString Root = OZ_DOCS "/..";

// What the sources of a folder include: the paths in <...> that begin with "oz/", and those in quotes.
QMap<QString, QStringList> includesOf(const QString &folder)
{
    static const QRegularExpression form(
        R"re(^#include (?:<(oz/[^>]+)>|"([^"]+)"))re", QRegularExpression::MultilineOption);
    QMap<QString, QStringList> includes;
    QDirIterator files(Root + '/' + folder, {"*.hpp", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        auto matches = form.globalMatch(QString::fromUtf8(file.readAll()));
        while (matches.hasNext()) {
            const auto match = matches.next();
            const QString include = match.captured(1) + match.captured(2);
            includes[QDir(Root).relativeFilePath(file.fileName())].append(include);
        }
    }
    EXPECT_FALSE(includes.isEmpty()) << folder.toStdString();
    return includes;
}

// The folder of the repository that has the included file, by preference \a from itself.
QString layerOf(const QString &include, const QString &from)
{
    static const QStringList own{"device", "models", "testing", "client"};
    if (include.startsWith("oz/"))
        return own.contains(include.section('/', 1, 1)) ? include.section('/', 1, 1) : "support";
    for (const QString &folder :
        {from, QString("tools"), QString("tools/meta/include"), QString("tools/facilities/include"),
            QString("services"), QString("support"), QString("device"), QString("panel")}) {
        if (QFileInfo::exists(Root + '/' + folder + '/' + include))
            return folder.section('/', 0, 0);
    }
    return from; // beside the file itself, or made by the build
}

TEST(LayersTest, EachLayerIncludesFromThoseBelowItAlone)
{
    const QMap<QString, QStringList> below{{"support", {}}, {"device", {"support"}},
        {"models", {"device", "support"}}, {"qml", {"device", "models"}}, {"sensors", {"support"}},
        {"mock", {"support"}}, {"client", {"support"}}, {"services", {"support"}},
        {"testing", {"device", "support", "client"}}, {"tools", {"device", "support", "client"}},
        {"panel", {"tools", "client", "device", "models", "support"}}};
    for (auto layer = below.cbegin(); layer != below.cend(); ++layer) {
        if (!QFileInfo::exists(Root + '/' + layer.key()))
            continue;
        const auto includes = includesOf(layer.key());
        for (auto file = includes.cbegin(); file != includes.cend(); ++file) {
            for (const QString &include : *file) {
                const QString other = layerOf(include, layer.key());
                EXPECT_TRUE(other == layer.key() || layer->contains(other))
                    << file.key().toStdString() << " includes " << include.toStdString() << " of "
                    << other.toStdString();
            }
        }
    }
}

TEST(LayersTest, TheRoomsOfTheServicesStandOnFloorsWithoutCircles)
{
    // From the lowest floor to the highest; the rooms of the facilities are all on one.
    const QStringList floors{"source", "table", "publishing", "phone", "linux", "facility", "cellular",
        "ROOM", "scenario", "daemon"};
    const auto floorOf = [&](const QString &room) {
        return floors.contains(room) ? floors.indexOf(room) : floors.indexOf("ROOM");
    };
    QMap<QString, QSet<QString>> used; // by each room
    const auto includes = includesOf("services");
    for (auto file = includes.cbegin(); file != includes.cend(); ++file) {
        const QString room = file.key().section('/', 1, 1);
        for (const QString &include : *file) {
            const QString other = include.section('/', 0, 0);
            if (other == room || !QFileInfo(Root + "/services/" + other).isDir())
                continue;
            used[room].insert(other);
            EXPECT_GE(floorOf(room), floorOf(other))
                << file.key().toStdString() << " includes " << include.toStdString();
        }
    }
    EXPECT_GT(used.size(), 15);
    // What uses no room that is left is taken out, until nothing is, or a circle.
    for (qsizetype left = -1; left != used.size();) {
        left = used.size();
        for (QSet<QString> &others : used)
            others.removeIf([&](const QString &other) { return !used.contains(other); });
        used.removeIf([](const auto &room) { return room.value().isEmpty(); });
    }
    EXPECT_EQ(used.keys(), QStringList()) << "include each other";
}

TEST(LayersTest, NoRealSourceIncludesTheSimulatedPhone)
{
    const auto includes = includesOf("services");
    int count = 0;
    for (auto file = includes.cbegin(); file != includes.cend(); ++file) {
        const QStringList way = file.key().split('/');
        const bool isSimulated = way.last().contains(QRegularExpression("^Simulated|Recorder|Facility"));
        static const QStringList higher{"phone", "facility", "scenario", "daemon"};
        if (way.size() != 3 || isSimulated || higher.contains(way[1]))
            continue;
        ++count;
        for (const QString &include : *file)
            EXPECT_FALSE(include.contains("Simulated")) << file.key().toStdString();
    }
    EXPECT_GT(count, 50);
}

} // namespace
