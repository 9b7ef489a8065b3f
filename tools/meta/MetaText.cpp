#include "meta/MetaText.hpp"

#include <oz/PrintableText.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSize>
#include <QStringList>

namespace oz::meta {

namespace {

bool isFlagSet(QMetaType type)
{
    return QByteArrayView(type.name()).startsWith("QFlags<");
}

qint64 enumNumber(const QVariant &value)
{
    // A flag set has no conversion of its own. Like every enumeration here, it is an int in memory.
    const QMetaType type = value.metaType();
    if (type.sizeOf() == sizeof(int))
        return *static_cast<const int *>(value.constData());
    return value.toLongLong();
}

QStringList enumNames(const QMetaEnum &type)
{
    QStringList names;
    for (int i = 0; i < type.keyCount(); ++i)
        names.append(QLatin1String(type.key(i)));
    return names;
}

QStringList flagNames(const QMetaEnum &type, qint64 number)
{
    QStringList names;
    qint64 rest = number;
    for (int i = 0; i < type.keyCount(); ++i) {
        const int flag = type.value(i);
        if (flag != 0 && (number & flag) == flag) {
            names.append(QLatin1String(type.key(i)));
            rest &= ~qint64(flag);
        }
    }
    if (rest)
        names.append("0x"_L1 + QString::number(rest, 16));
    return names;
}

QString jsonText(const QVariant &value)
{
    const QJsonValue json = QJsonValue::fromVariant(value);
    const QJsonDocument document =
        json.isArray() ? QJsonDocument(json.toArray()) : QJsonDocument(json.toObject());
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}

bool isMapOrList(QMetaType type)
{
    return type.id() == QMetaType::QVariantMap || type.id() == QMetaType::QVariantList;
}

} // namespace

QMetaEnum enumOf(QMetaType type)
{
    const QByteArray name(type.name());
    // A flag set has the name of its template: QFlags<oz::device::CellularTechnology::Type>. One that its
    // holder does not declare is found through its enumeration, if that is registered.
    bool isFlags = isFlagSet(type);
    const QByteArray plain = isFlags ? name.sliced(7, name.size() - 8) : name;
    const QMetaObject *scope = type.metaObject();
    if (!scope && isFlags) {
        scope = QMetaType::fromName(plain).metaObject();
        isFlags = false;
    }
    if (!scope)
        return {};
    if (!isFlagSet(type) && !(type.flags() & QMetaType::IsEnumeration))
        return {};
    const QByteArray local = plain.sliced(plain.lastIndexOf(':') + 1);
    for (int i = 0; i < scope->enumeratorCount(); ++i) {
        const QMetaEnum candidate = scope->enumerator(i);
        if (candidate.isFlag() == isFlags && (local == candidate.enumName() || local == candidate.name()))
            return candidate;
    }
    return {};
}

QString typeText(QMetaType type)
{
    const QMetaEnum enumeration = enumOf(type);
    if (!enumeration.isValid())
        return QLatin1String(type.name());
    const QByteArray scope(enumeration.scope());
    return QString::fromLatin1(scope.sliced(scope.lastIndexOf(':') + 1))
        + (enumeration.isFlag() ? u" flags"_s : QString());
}

QString valueText(const QVariant &value)
{
    const QMetaType type = value.metaType();
    if (const QMetaEnum enumeration = enumOf(type); enumeration.isValid()) {
        const qint64 number = enumNumber(value);
        if (enumeration.isFlag()) {
            const QStringList names = flagNames(enumeration, number);
            return names.isEmpty() ? u"None"_s : names.join(u'|');
        }
        const char *key = enumeration.valueToKey(int(number));
        return key ? QString::fromLatin1(key) : QString::number(number);
    }
    if (isFlagSet(type))
        return QString::number(enumNumber(value));
    switch (type.id()) {
    // Enough digits to tell the value from its neighbours: 25.34f is not 25.34000015.
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 7);
    case QMetaType::QString:
        return printableText(QLatin1Char('"') + value.toString() + QLatin1Char('"'));
    case QMetaType::QSize: {
        const QSize size = value.toSize();
        return QString::number(size.width()) + QLatin1Char('x') + QString::number(size.height());
    }
    case QMetaType::QSizeF: {
        const QSizeF size = value.toSizeF();
        return QString::number(size.width()) + QLatin1Char('x') + QString::number(size.height());
    }
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
        return printableText(jsonText(value));
    default:
        return value.toString();
    }
}

QJsonValue valueJson(const QVariant &value)
{
    const QMetaType type = value.metaType();
    if (const QMetaEnum enumeration = enumOf(type); enumeration.isValid()) {
        const qint64 number = enumNumber(value);
        if (enumeration.isFlag())
            return QJsonArray::fromStringList(flagNames(enumeration, number));
        const char *key = enumeration.valueToKey(int(number));
        return key ? QJsonValue(QLatin1String(key)) : QJsonValue(number);
    }
    if (isFlagSet(type))
        return enumNumber(value);
    switch (type.id()) {
    case QMetaType::QSize: {
        const QSize size = value.toSize();
        return QJsonObject{{u"width"_s, size.width()}, {u"height"_s, size.height()}};
    }
    case QMetaType::QSizeF: {
        const QSizeF size = value.toSizeF();
        return QJsonObject{{u"width"_s, size.width()}, {u"height"_s, size.height()}};
    }
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toBase64());
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 7).toDouble();
    default:
        return QJsonValue::fromVariant(value);
    }
}

std::optional<QVariant> parseValue(const QString &text, QMetaType type)
{
    if (const QMetaEnum enumeration = enumOf(type); enumeration.isValid()) {
        bool ok = false;
        int number = text.toInt(&ok, 0);
        const QByteArray name = text.toLatin1();
        if (!ok)
            number =
                enumeration.isFlag() ? enumeration.keysToValue(name, &ok) : enumeration.keyToValue(name, &ok);
        if (!ok)
            return std::nullopt;
        return QVariant(type, &number);
    }
    if (isMapOrList(type)) {
        const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
        const QVariant value = document.toVariant();
        return value.metaType() == type ? std::optional(value) : std::nullopt;
    }
    switch (type.id()) {
    case QMetaType::QString:
        return text;
    case QMetaType::QStringList:
        return text.split(u',', Qt::SkipEmptyParts);
    case QMetaType::Bool:
        if (text == u"true" || text == u"false")
            return text == u"true";
        return std::nullopt;
    default:
        break;
    }
    if (type.flags() & QMetaType::IsPointer)
        return std::nullopt;
    QVariant value(text);
    if (!value.convert(type))
        return std::nullopt;
    // QVariant truncates a number that is too large for the type.
    bool isInteger = false;
    const qlonglong integer = text.toLongLong(&isInteger);
    if (isInteger && value.toLongLong() != integer && value.toDouble() != double(integer))
        return std::nullopt;
    return value;
}

QString expectation(QMetaType type)
{
    if (const QMetaEnum enumeration = enumOf(type); enumeration.isValid()) {
        const QString names = enumNames(enumeration).join(", "_L1);
        return (enumeration.isFlag() ? "any of "_L1 : "one of "_L1) + names
            + (enumeration.isFlag() ? " joined with '|'"_L1 : ""_L1);
    }
    switch (type.id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return u"a whole number ("_s + QLatin1String(type.name()) + u')';
    case QMetaType::Float:
    case QMetaType::Double:
        return u"a number"_s;
    case QMetaType::Bool:
        return u"true or false"_s;
    case QMetaType::QVariantMap:
        return u"a JSON map"_s;
    case QMetaType::QVariantList:
        return u"a JSON list"_s;
    default:
        return typeText(type);
    }
}

} // namespace oz::meta
