#include "Tables.hpp"

#include "scenario/PublicValues.hpp"
#include "source/Error.hpp"

#include <QJsonArray>
#include <QJsonDocument>

namespace oz::pages {

using namespace services;

namespace {

const QString Values = QStringLiteral("values");
const QString Requests = QStringLiteral("requests");
const QString FieldsOf = QStringLiteral("fields ");
const QString SettingsOf = QStringLiteral("settings ");

constexpr int MostWords = 8; // of a list, that a table of what is published names

QString code(const QString &text)
{
    return u'`' + QString(text).replace(u'|', QLatin1String("\\|")) + u'`';
}

QString row(const QStringList &cells)
{
    return QLatin1String("| ") + cells.join(QLatin1String(" | ")) + QLatin1String(" |");
}

QStringList table(const QStringList &head, const QList<QStringList> &rows)
{
    QStringList lines{row(head), u'|' + QStringLiteral("---|").repeated(head.size())};
    for (const QStringList &cells : rows)
        lines.append(row(cells));
    return lines;
}

QString withUnit(const QString &text, const ValueType &type)
{
    return type.unit.isEmpty() ? text : QString(text + u' ' + type.unit);
}

// The values that a condition compares with.
QString publishedType(const ValueType &type)
{
    if (type.kind == ValueType::Word)
        return type.words.join(QLatin1String(", "));
    if (type.kind == ValueType::List && !type.words.isEmpty() && type.words.size() <= MostWords)
        return accepted(type);
    if (type.kind == ValueType::Number && !type.unit.isEmpty())
        return QLatin1String("a number in ") + type.unit;
    return type.text();
}

QStringList valuesTable()
{
    QList<QStringList> rows;
    for (const PublicValue &value : publicValues())
        rows.append({code(value.name), publishedType(value.field->type), value.field->help});
    return table({QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("meaning")}, rows);
}

QStringList requestsTable()
{
    QList<QStringList> rows;
    for (const AskedRequest &request : publicRequests()) {
        QStringList parts;
        for (const AskedRequest::Part &part : request.parts)
            parts.append(code(part.name));
        rows.append({code(request.name), parts.join(QLatin1String(", ")), request.help});
    }
    return table({QStringLiteral("request"), QStringLiteral("comes with"), QStringLiteral("meaning")}, rows);
}

// The same, with the published text if that differs.
QString publishedForms(const Field &field)
{
    const QStringList words = field.type.kind == ValueType::Truth
        ? QStringList{QStringLiteral("true"), QStringLiteral("false")}
        : field.type.words;
    if (field.published.isEmpty() || field.published == words)
        return publishedType(field.type);
    QStringList forms;
    for (qsizetype i = 0; i < field.published.size(); ++i) {
        const QString word = words.value(i, QStringLiteral("unknown"));
        forms.append(word == field.published[i] ? word : QString(word + u' ' + code(field.published[i])));
    }
    return (field.type.kind == ValueType::List ? QStringLiteral("a list of ") : QString())
        + forms.join(QLatin1String(", "));
}

QStringList fieldsTables(const Facility &facility)
{
    // By object, in their order.
    QStringList paths;
    for (const Field &field : facility.fields)
        paths.append(field.path);
    paths.removeDuplicates();
    QStringList lines;
    for (const QString &path : paths) {
        QList<QStringList> rows;
        for (const Field &field : facility.fields) {
            if (field.path != path)
                continue;
            const QString type = publishedForms(field);
            const QString place = field.place.endsWith(u'/') ? field.place.chopped(1) : field.place;
            rows.append({code(field.fullName(facility.name)), place.isEmpty() ? QString() : code(place),
                field.type.isPrivate ? QString(type + QLatin1String(", private")) : type, field.help});
        }
        if (!lines.isEmpty())
            lines.append(QString());
        lines.append({code(path) + u':', QString()});
        lines.append(table({QStringLiteral("name"), QStringLiteral("attribute"), QStringLiteral("type"),
                               QStringLiteral("meaning")},
            rows));
    }
    return lines;
}

QStringList settingsTable(const std::vector<Setting> &settings)
{
    QList<QStringList> rows;
    for (const Setting &setting : settings) {
        QStringList orders;
        for (const Order &order : setting.orders) {
            orders.append(
                code(order.argument.isEmpty() ? order.verb : QString(order.verb + u' ' + order.argument)));
        }
        rows.append({code(setting.key), accepted(setting.type), code(jsonText(setting.initial)),
            orders.join(QLatin1String(", ")), setting.help});
    }
    return table({QStringLiteral("key"), QStringLiteral("takes"), QStringLiteral("default"),
                     QStringLiteral("verbs"), QStringLiteral("meaning")},
        rows);
}

QStringList settingsTables(const Facility &facility)
{
    QStringList lines;
    if (!facility.settings.empty())
        lines = settingsTable(facility.settings);
    if (!facility.instances.key.isEmpty()) {
        if (!lines.isEmpty())
            lines.append(QString());
        lines.append({QLatin1String("Each of ") + code(facility.instances.key) + u':', QString()});
        lines.append(settingsTable(facility.instances.settings));
    }
    return lines;
}

const Facility &facilityNamed(const QString &name)
{
    for (const Facility &facility : facilities()) {
        if (facility.name == name)
            return facility;
    }
    throw Error(QLatin1String("there is no facility '") + name + u'\'');
}

} // namespace

QString accepted(const ValueType &type)
{
    QString text;
    switch (type.kind) {
    case ValueType::Number:
        text = QString::number(type.least, 'g', 10) + QLatin1String(" to ")
            + QString::number(type.most, 'g', 10);
        text = withUnit(text, type);
        break;
    case ValueType::Word:
        text = type.words.join(QLatin1String(", "));
        break;
    case ValueType::List:
        text = type.words.isEmpty()
            ? QStringLiteral("a list")
            : QString(QLatin1String("some of ") + type.words.join(QLatin1String(", ")));
        break;
    case ValueType::Text:
        text = type.form.isEmpty() ? type.text() : type.formText;
        break;
    case ValueType::Truth:
        text = type.text();
        break;
    }
    return type.mayBeUnknown ? QString(text + QLatin1String(" or null")) : text;
}

QString jsonText(const QVariant &value)
{
    if (value.typeId() == QMetaType::QStringList) {
        QStringList texts;
        for (const QString &each : value.toStringList())
            texts.append(jsonText(each));
        return u'[' + texts.join(QLatin1String(", ")) + u']';
    }
    // JSON's own writer takes arrays and objects alone.
    const QByteArray array =
        QJsonDocument(QJsonArray{QJsonValue::fromVariant(value)}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.sliced(1).chopped(1));
}

QStringList tablesFor(const QString &name)
{
    if (name == Values)
        return valuesTable();
    if (name == Requests)
        return requestsTable();
    if (name.startsWith(FieldsOf))
        return fieldsTables(facilityNamed(name.sliced(FieldsOf.size())));
    if (name.startsWith(SettingsOf))
        return settingsTables(facilityNamed(name.sliced(SettingsOf.size())));
    throw Error(QLatin1String("there is no table '") + name + u'\'');
}

QStringList regionNames()
{
    QStringList names{Values, Requests};
    for (const Facility &facility : facilities())
        names.append({FieldsOf + facility.name, SettingsOf + facility.name});
    return names;
}

QStringList rowsWithoutHelp()
{
    QStringList rows;
    const auto expectHelp = [&](const Facility &facility, const char *kind, const QString &name,
                                const QString &help) {
        if (help.isEmpty())
            rows.append(facility.name + QLatin1String(": the ") + QLatin1String(kind) + u' ' + name);
    };
    for (const Facility &facility : facilities()) {
        for (const Field &field : facility.fields)
            expectHelp(facility, "field", field.name, field.help);
        for (const AskedRequest &request : facility.requests)
            expectHelp(facility, "request", request.name, request.help);
        for (const auto *settings : {&facility.settings, &facility.instances.settings}) {
            for (const Setting &setting : *settings) {
                expectHelp(facility, "setting", setting.key, setting.help);
                for (const Order &order : setting.orders)
                    expectHelp(facility, "verb", order.verb, order.help);
            }
        }
    }
    return rows;
}

} // namespace oz::pages
