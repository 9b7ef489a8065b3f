#include "table/ValueType.hpp"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace oz::services {

namespace {

const QString Unknown = QStringLiteral("unknown");
const QStringList OnOff{QStringLiteral("on"), QStringLiteral("off")};

bool isNumber(const QVariant &value)
{
    const int type = value.typeId();
    return type == QMetaType::Int || type == QMetaType::LongLong || type == QMetaType::Double;
}

QString numberText(double number)
{
    return QString::number(number, 'g', 10);
}

} // namespace

QString ValueType::text() const
{
    switch (kind) {
    case Truth:
        return QStringLiteral("true or false");
    case Number:
        return QStringLiteral("a number");
    case Word:
        return words.join(u'|');
    case Text:
        return QStringLiteral("text");
    case List:
        return QStringLiteral("a list");
    }
    return {};
}

QString ValueType::expected() const
{
    return mayBeUnknown ? QString(expectedKnown() + QLatin1String(" or null")) : expectedKnown();
}

QString ValueType::expectedArgument() const
{
    const QString known =
        kind == Truth ? QString(QLatin1String("one of ") + OnOff.join(QLatin1String(", "))) : expectedKnown();
    return mayBeUnknown ? QString(known + QLatin1String(" or ") + Unknown) : known;
}

QString ValueType::expectedKnown() const
{
    switch (kind) {
    case Truth:
        return text();
    case Number:
        return (isWhole ? QLatin1String("a whole number") : QLatin1String("a number"))
            + (least < most ? QString(
                   QLatin1String(" from ") + numberText(least) + QLatin1String(" to ") + numberText(most))
                            : QString());
    case Word:
    case List:
        return QLatin1String("one of ") + words.join(QLatin1String(", "));
    case Text:
        return form.isEmpty() ? QStringLiteral("text") : formText;
    }
    return {};
}

std::optional<QVariant> ValueType::accept(const QVariant &value) const
{
    if (!value.isValid() || value.isNull())
        return mayBeUnknown ? std::optional(QVariant()) : std::nullopt;
    switch (kind) {
    case Truth:
        return value.typeId() == QMetaType::Bool ? std::optional(value) : std::nullopt;
    case Number: {
        const double number = value.toDouble();
        const bool fits = isNumber(value) && (least >= most || (number >= least && number <= most))
            && (!isWhole || number == std::trunc(number));
        return fits ? std::optional(isWhole ? QVariant(int(number)) : QVariant(number)) : std::nullopt;
    }
    case Word:
        return words.contains(value.toString()) ? std::optional(value) : std::nullopt;
    case Text: {
        const bool fits = value.typeId() == QMetaType::QString
            && (form.isEmpty()
                || QRegularExpression(QRegularExpression::anchoredPattern(form))
                       .match(value.toString())
                       .hasMatch());
        return fits ? std::optional(value) : std::nullopt;
    }
    case List: {
        const QStringList all = value.toStringList();
        const bool fits = words.isEmpty() || std::all_of(all.begin(), all.end(), [this](const QString &each) {
            return words.contains(each);
        });
        return fits ? std::optional(QVariant(all)) : std::nullopt;
    }
    }
    return std::nullopt;
}

std::optional<QVariant> ValueType::fromArgument(const QString &argument) const
{
    if (mayBeUnknown && argument == Unknown)
        return QVariant();
    switch (kind) {
    case Truth:
        return OnOff.contains(argument) ? std::optional(QVariant(argument == OnOff.first())) : std::nullopt;
    case Number: {
        bool ok = false;
        const double number = argument.toDouble(&ok);
        return ok && std::isfinite(number) ? accept(number) : std::nullopt;
    }
    case List:
        return accept(argument.split(u',', Qt::SkipEmptyParts));
    default:
        return accept(argument);
    }
}

QString ValueType::toArgument(const QVariant &value) const
{
    if (!value.isValid())
        return Unknown;
    switch (kind) {
    case Truth:
        return OnOff[value.toBool() ? 0 : 1];
    case Number:
        return numberText(value.toDouble());
    case List:
        return value.toStringList().join(u',');
    default:
        return value.toString();
    }
}

} // namespace oz::services
