// The pages of docs/facilities/ say what the library has: no more, no less, and in its order.

#include "harness/Testing.hpp"

#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"
#include "ozdevice/FacilityTable.hpp"

#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/MiracastResult.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QFile>
#include <QMetaProperty>
#include <QMultiMap>
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
    QFile file(QString(OZ_DOCS) + "/facilities/" + entry.name + ".md");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    const QString page = QString::fromUtf8(file.readAll());
    const QString unwrapped = QString(page).replace(QRegularExpression("\\s+"), " ").replace("( ", "(");
    EXPECT_TRUE(page.startsWith(
        "# " + QString(entry.type->className()).section("::", -1) + "\n\n`" + entry.name + '`'));

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
        EXPECT_EQ(row.value(1), meta::typeText(property.metaType())) << property.name();
        EXPECT_EQ(row.value(2).contains("writable)"), property.isWritable()) << property.name();
        EXPECT_EQ(row.value(2).contains("(constant"), property.isConstant()) << property.name();
        const QTypeRevision revision = QTypeRevision::fromEncodedVersion(property.revision());
        const bool isLater = revision.hasMinorVersion() && revision.minorVersion() > 0;
        EXPECT_EQ(row.value(2).contains(QString("revision %1)").arg(revision.minorVersion())), isLater)
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

TEST(DocsIndex, ListsEveryFacility)
{
    QFile index(QString(OZ_DOCS) + "/facilities/README.md");
    ASSERT_TRUE(index.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(index.readAll());
    for (const FacilityEntry &entry : facilityTable()) {
        EXPECT_TRUE(text.contains(QString("| [%1](%1.md) | `%2` |")
                                      .arg(entry.name, QString(entry.type->className()).section("::", -1))))
            << entry.name.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Each, DocsTest, ::testing::ValuesIn(facilityTable()),
    [](const auto &row) { return row.param.name.simplified().remove('-').toStdString(); });

} // namespace
