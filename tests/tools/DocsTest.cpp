// Checks that the pages of docs/ agree with the library and its programs.

#include "harness/Testing.hpp"

#include "facilities/FacilityTable.hpp"
#include "meta/MetaText.hpp"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QMetaProperty>
#include <QProcess>
#include <QRegularExpression>

namespace oz::tools {

void PrintTo(const FacilityEntry &entry, std::ostream *out)
{
    *out << entry.name.toStdString();
}

} // namespace oz::tools

using namespace oz;
using namespace oz::tools;

namespace {

QString contentOf(const QString &name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return QString::fromUtf8(file.readAll());
}

class DocsTest : public ::testing::TestWithParam<FacilityEntry>
{
};

TEST_P(DocsTest, ThePageNamesTheClassAndItsObjects)
{
    const FacilityEntry &entry = GetParam();
    const QString page = contentOf(QString(OZ_DOCS) + "/facilities/" + entry.name + ".md");
    const QString className = QString(entry.type->className()).section("::", -1);
    EXPECT_TRUE(page.startsWith("# " + className + "\n\n`" + entry.name + '`'));
    EXPECT_TRUE(page.contains("<oz/device/" + className + ".hpp>"));
    for (const QString &path : entry.objects + entry.activity)
        EXPECT_TRUE(page.contains('`' + path + '`')) << path.toStdString();
}

TEST_P(DocsTest, EachPropertyIsFinalAndEitherConstantOrAnnounced)
{
    const QMetaObject *type = GetParam().type;
    for (int i = QObject::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
        EXPECT_TRUE(property.isReadable() && property.isFinal()) << property.name();
        EXPECT_NE(property.isConstant(), property.hasNotifySignal()) << property.name();
        if (property.hasNotifySignal()) {
            // The typed signal is the first of its name. Some properties share the signal of another.
            const QMap<QByteArray, QByteArray> others{{"chargingState", "level"}, {"resolution", "pixelSize"},
                {"deviceCategory", "deviceType"}, {"deviceSubCategory", "deviceType"}};
            const QByteArray about = others.value(property.name(), property.name());
            const QMetaMethod notify = property.notifySignal();
            EXPECT_EQ(notify.name(), about + "Changed");
            EXPECT_EQ(notify.revision(), property.revision()) << property.name();
            for (int j = 0; j < notify.methodIndex(); ++j)
                EXPECT_NE(type->method(j).name(), notify.name());
        }
        if (const QMetaEnum enumeration = meta::enumOf(property.metaType()); enumeration.isValid()) {
            const QMetaObject *scope = enumeration.enclosingMetaObject();
            EXPECT_EQ(scope->enumerator(scope->indexOfEnumerator("Type")).keyCount(), enumeration.keyCount());
        }
    }
}

// The block is pasted as a whole, and the shell reads the lines one after another.
TEST_P(DocsTest, ThePagesCommandsWorkWhenPasted)
{
    const oz::harness::DeviceRoot root;
    const QString page = contentOf(QString(OZ_DOCS) + "/facilities/" + GetParam().name + ".md");
    QString block;
    for (const QString &line : page.section("\n## Try it\n", 1).section("\n## ", 0, 0).split('\n')) {
        if (line.startsWith("    "))
            block += line.sliced(4) + '\n';
    }
    ASSERT_TRUE(block.count('\n') >= 3) << block.toStdString();
    // Each shell reports each command that fails.
    root.place("/env", "trap 'echo \"FAILED: $BASH_COMMAND\" >&2' ERR\n");
    QProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("BASH_ENV", root.file("/env"));
    environment.insert("PATH", QFileInfo(OZ_COMMAND).path() + ':' + environment.value("PATH"));
    shell.setProcessEnvironment(environment);
    shell.start("bash", QStringList());
    shell.write(block.toUtf8());
    // A background process may be the only one to print anything.
    shell.waitForReadyRead(60'000);
    shell.closeWriteChannel();
    ASSERT_TRUE(shell.waitForFinished(90'000));
    const QString errors = QString::fromUtf8(shell.readAllStandardError());
    EXPECT_EQ(shell.exitCode(), 0) << errors.toStdString();
    EXPECT_FALSE(errors.contains("FAILED: ")) << errors.toStdString();
    EXPECT_FALSE(shell.readAllStandardOutput().isEmpty());
}

TEST(DocsIndex, ListsEveryFacility)
{
    const QString index = contentOf(QString(OZ_DOCS) + "/facilities/README.md");
    for (const FacilityEntry &entry : facilityTable()) {
        EXPECT_TRUE(index.contains(QString("| [%1](%1.md) | `%2` |")
                                       .arg(entry.name, QString(entry.type->className()).section("::", -1))))
            << entry.name.toStdString();
    }
}

TEST(Manual, ListsEveryRowOfThePagesTablesOfTwoColumns)
{
    const std::pair<const char *, const char *> pages[] = {{"ozdevice.1", "command.md"},
        {"ozcast.1", "cast.md"}, {"ozdevice-panel.1", "panel.md"}, {"ozdeviced.8", "daemon.md"},
        {"ozdevice-scenario.5", "scenarios.md"}};
    for (const auto &[name, source] : pages) {
        ASSERT_TRUE(QFileInfo::exists(OZ_MANUAL "/" + QString(name))) << name << " (is lowdown installed?)";
        const QString page =
            contentOf(OZ_MANUAL "/" + QString(name)).remove(QRegularExpression(R"(\\f[A-Z])"));
        int rows = 0;
        bool isList = false;
        for (const QString &line : contentOf(OZ_DOCS "/" + QString(source)).split('\n')) {
            const QString term = line.mid(2).section(" | ", 0, 0).remove('`');
            if (isList && line.startsWith("| ") && ++rows) {
                EXPECT_TRUE(page.contains("\n.LP\n" + term + "\n")) << name << ": " << term.toStdString();
            }
            isList = line == "|---|---|" || (isList && line.startsWith("| "));
        }
        EXPECT_GE(rows, 3) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, DocsTest, ::testing::ValuesIn(facilityTable()),
    [](const auto &row) { return row.param.name.simplified().remove('-').toStdString(); });

} // namespace
