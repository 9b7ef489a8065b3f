// The pages of docs/facilities/ say what the library has: no more, no less, and in its order.

#include "harness/Testing.hpp"

#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"
#include "ozdevice/FacilityTable.hpp"

#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/MiracastResult.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QFile>
#include <QFileInfo>
#include <QMetaProperty>
#include <QMultiMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTypeRevision>

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

// The cells of the rows of a section's table, without its head.
QList<QStringList> tableOf(const QString &page, const QString &section)
{
    QList<QStringList> rows;
    const QString text = page.section("\n## " + section + "\n", 1).section("\n## ", 0, 0);
    for (const QString &line : text.split('\n')) {
        if (!line.startsWith("| `"))
            continue;
        QStringList cells;
        for (const QString &cell : line.mid(1).chopped(1).split('|'))
            cells.append(cell.trimmed().remove('`'));
        rows.append(cells);
    }
    return rows;
}

QStringList firstCells(const QList<QStringList> &rows)
{
    QStringList cells;
    for (const QStringList &row : rows)
        cells.append(row.first());
    return cells;
}

QString enumerationText(const QMetaEnum &enumeration, const QString &name, const QString &page)
{
    // Bits are written in hexadecimal where they are many; the page decides.
    QStringList values;
    for (int i = 0; i < enumeration.keyCount(); ++i) {
        const QString key = enumeration.key(i);
        const QString hex = QString("`%1` (0x%2)").arg(key).arg(enumeration.value(i), 0, 16);
        values.append(page.contains(hex) ? hex : QString("`%1` (%2)").arg(key).arg(enumeration.value(i)));
    }
    return '`' + name + "`: " + values.join(", ") + '.';
}

class DocsTest : public ::testing::TestWithParam<FacilityEntry>
{
};

TEST_P(DocsTest, ThePageOfTheFacilityIsTheLibrarys)
{
    const FacilityEntry &entry = GetParam();
    const QString page = contentOf(QString(OZ_DOCS) + "/facilities/" + entry.name + ".md");
    const QString className = QString(entry.type->className()).section("::", -1);
    const QString declarations = contentOf(OZ_DOCS "/../device/include/oz/device/" + className + ".hpp");
    const QString unwrapped = QString(page).replace(QRegularExpression("\\s+"), " ").replace("( ", "(");
    EXPECT_TRUE(page.startsWith("# " + className + "\n\n`" + entry.name + '`'));
    for (const QString &path : entry.objects + entry.activity)
        EXPECT_TRUE(page.contains(path)) << path.toStdString();

    QList<QStringList> properties = tableOf(page, "Properties");
    for (int i = QObject::staticMetaObject.propertyCount(); i < entry.type->propertyCount(); ++i) {
        const QMetaProperty property = entry.type->property(i);
        EXPECT_TRUE(property.isReadable() && property.isFinal()) << property.name();
        EXPECT_NE(property.isConstant(), property.hasNotifySignal()) << property.name();
        if (property.hasNotifySignal()) {
            // The first of its name, which is the typed one; some go with others.
            const QMap<QByteArray, QByteArray> others{{"chargingState", "level"}, {"resolution", "pixelSize"},
                {"deviceCategory", "deviceType"}, {"deviceSubCategory", "deviceType"}};
            const QByteArray about = others.value(property.name(), property.name());
            const QMetaMethod notify = property.notifySignal();
            EXPECT_EQ(notify.name(), about + "Changed");
            EXPECT_EQ(notify.revision(), property.revision()) << property.name();
            for (int j = 0; j < notify.methodIndex(); ++j)
                EXPECT_NE(entry.type->method(j).name(), notify.name());
        }
        ASSERT_FALSE(properties.isEmpty()) << "not on the page: " << property.name();
        const QStringList row = properties.takeFirst();
        EXPECT_EQ(row.value(0), property.name());
        EXPECT_TRUE(declarations.contains(
            QRegularExpression(QString("\\b%1\\s+READ %2\\b").arg(property.name(), row.value(1).chopped(2)))))
            << row.value(1).toStdString();
        EXPECT_EQ(row.value(2), meta::typeText(property.metaType())) << property.name();
        const QString meaning = row.value(3);
        EXPECT_EQ(meaning.contains("writable)"), property.isWritable()) << property.name();
        EXPECT_EQ(meaning.contains("(constant"), property.isConstant()) << property.name();
        const QTypeRevision revision = QTypeRevision::fromEncodedVersion(property.revision());
        const bool isLater = revision.hasMinorVersion() && revision.minorVersion() > 0;
        EXPECT_EQ(meaning.contains(QString("revision %1)").arg(revision.minorVersion())), isLater)
            << property.name();
        if (const QMetaEnum enumeration = meta::enumOf(property.metaType()); enumeration.isValid()) {
            const QString holder = QString(enumeration.scope()).section("::", -1);
            EXPECT_TRUE(unwrapped.contains(enumerationText(enumeration, holder, unwrapped)))
                << holder.toStdString();
            const QMetaObject *scope = enumeration.enclosingMetaObject();
            EXPECT_EQ(scope->enumerator(scope->indexOfEnumerator("Type")).keyCount(), enumeration.keyCount());
        }
    }
    EXPECT_EQ(properties, QList<QStringList>()) << "not in the library";
    // Those that no property has.
    const QMultiMap<QString, QMetaEnum> others{
        {"data-profile", QMetaEnum::fromType<device::CellularConnectionRequestResult::Type>()},
        {"miracast", QMetaEnum::fromType<device::MiracastResult::Type>()},
        {"wifi-direct", QMetaEnum::fromType<device::WiFiDirectDeviceType::Type>()},
        {"wifi-direct", QMetaEnum::fromType<device::WiFiDirectIntent::Type>()},
        {"wifi-direct", QMetaEnum::fromType<device::WiFiDirectResult::Type>()},
        {"wifi-direct", QMetaEnum::fromType<device::WiFiDirectSecondaryDeviceType::Type>()},
        {"wifi-direct", QMetaEnum::fromType<device::WiFiDirectWpsMethod::Type>()},
    };
    for (const QMetaEnum &enumeration : others.values(entry.name)) {
        const QString holder = QString(enumeration.scope()).section("::", -1);
        EXPECT_TRUE(unwrapped.contains(enumerationText(enumeration, holder, unwrapped)))
            << holder.toStdString();
    }

    QStringList signatures;
    for (int i = QObject::staticMetaObject.methodCount(); i < entry.type->methodCount(); ++i) {
        const QMetaMethod method = entry.type->method(i);
        if (method.methodType() != QMetaMethod::Signal)
            continue;
        QStringList parameters;
        for (int j = 0; j < method.parameterCount(); ++j)
            parameters.append(QString(method.parameterTypes().at(j)) + ' ' + method.parameterNames().at(j));
        signatures.append(QString(method.name()) + '(' + parameters.join(", ") + ')');
    }
    EXPECT_EQ(firstCells(tableOf(page, "Signals")), signatures);

    for (const QString &method : meta::MethodCall::namesOf(entry.type))
        EXPECT_TRUE(page.section("\n## Requests\n", 1).contains("| `" + method + '('))
            << method.toStdString();
}

// Pasted whole, as a newcomer would: the shell reads the lines one after another.
TEST_P(DocsTest, WhatItSaysToTryWorksWhenPasted)
{
    const oz::testing::DeviceRoot root;
    const QString page = contentOf(QString(OZ_DOCS) + "/facilities/" + GetParam().name + ".md");
    QString block;
    for (const QString &line : page.section("\n## Try it\n", 1).section("\n## ", 0, 0).split('\n')) {
        if (line.startsWith("    "))
            block += line.sliced(4) + '\n';
    }
    ASSERT_TRUE(block.count('\n') >= 3) << block.toStdString();
    // Every shell tells of each command that fails.
    root.place("/env", "trap 'echo \"FAILED: $BASH_COMMAND\" >&2' ERR\n");
    QProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("BASH_ENV", root.file("/env"));
    environment.insert("PATH", QFileInfo(OZ_COMMAND).path() + ':' + environment.value("PATH"));
    shell.setProcessEnvironment(environment);
    shell.start("bash", QStringList());
    shell.write(block.toUtf8());
    // Something that runs in the background may be the only one to print anything.
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
        {"ozdevice-panel.1", "panel.md"}, {"ozdeviced.8", "daemon.md"},
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
