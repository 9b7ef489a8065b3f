#include "ozdevice/FacilityDescription.hpp"

#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"
#include "ozdevice/Output.hpp"

namespace oz::tools {

namespace {

QStringList numberedNames(const QMetaEnum &enumeration)
{
    QStringList names;
    for (int i = 0; i < enumeration.keyCount(); ++i) {
        names.append(QLatin1String(enumeration.key(i)) + QLatin1String(" (")
            + QString::number(enumeration.value(i)) + u')');
    }
    return names;
}

QString holderOf(const QMetaEnum &enumeration)
{
    return QString::fromLatin1(enumeration.scope()).section(u':', -1);
}

// What \a method of \a entry returns, by the enumeration that its number is of.
QString returnedText(const FacilityEntry &entry, const QMetaMethod &method)
{
    const auto returned = entry.returns.constFind(method.name());
    return returned == entry.returns.cend() ? meta::typeText(method.returnMetaType())
                                            : holderOf(returned->names);
}

void printHeading(const char *heading)
{
    printLine({});
    printLine(painted(Paint::Bold, QLatin1String(heading)));
}

QString joined(const QStringList &words)
{
    return words.join(QLatin1String(", "));
}

} // namespace

QJsonObject describe(const FacilityEntry &entry)
{
    QJsonArray properties;
    for (const QMetaProperty &property : meta::propertiesOf(entry.type))
        properties.append(meta::describe(property));
    QJsonArray methods;
    for (const QMetaMethod &method : meta::methodsOf(entry.type)) {
        QJsonObject description = meta::describe(method);
        if (const auto returned = entry.returns.constFind(method.name()); returned != entry.returns.cend()) {
            QJsonObject values;
            for (int i = 0; i < returned->names.keyCount(); ++i)
                values.insert(QLatin1String(returned->names.key(i)), returned->names.value(i));
            description.insert(QStringLiteral("returns"), holderOf(returned->names));
            description.insert(QStringLiteral("results"), values);
        }
        if (const QByteArray answer = entry.answers.value(method.name()).signal; !answer.isEmpty())
            description.insert(QStringLiteral("answeredBy"), QString::fromLatin1(answer));
        methods.append(description);
    }
    QJsonArray heard;
    for (const QMetaMethod &signal : meta::signalsOf(entry.type))
        heard.append(meta::describe(signal));
    QStringList dynamicProperties;
    for (const QByteArray &name : entry.dynamicProperties)
        dynamicProperties.append(QString::fromLatin1(name));
    QJsonObject description{{QStringLiteral("name"), entry.name},
        {QStringLiteral("aliases"), QJsonArray::fromStringList(entry.aliases)},
        {QStringLiteral("class"), QLatin1String(entry.type->className())},
        {QStringLiteral("help"), entry.help},
        {QStringLiteral("objects"), QJsonArray::fromStringList(entry.objects)},
        {QStringLiteral("properties"), properties}, {QStringLiteral("methods"), methods},
        {QStringLiteral("signals"), heard},
        {QStringLiteral("dynamicProperties"), QJsonArray::fromStringList(dynamicProperties)}};
    if (!entry.selector.isEmpty()) {
        description.insert(QStringLiteral("selector"), entry.selector);
        description.insert(QStringLiteral("instances"), QJsonArray::fromStringList(entry.instances()));
    }
    return description;
}

void printMethods(const FacilityEntry &entry)
{
    for (const QMetaMethod &method : meta::methodsOf(entry.type)) {
        QString line = QLatin1String("  ") + meta::signatureText(method);
        if (method.returnMetaType().id() != QMetaType::Void)
            line += QLatin1String(": ") + returnedText(entry, method);
        printLine(line);
        for (int i = 0; i < method.parameterCount(); ++i) {
            const QMetaType type = method.parameterMetaType(i);
            if (meta::enumOf(type).isValid()) {
                printLine(QLatin1String("      ") + QString::fromLatin1(method.parameterNames().value(i))
                    + QLatin1String(" is ") + meta::expectation(type));
            }
        }
        if (const auto returned = entry.returns.constFind(method.name()); returned != entry.returns.cend())
            printLine(QLatin1String("      returns ") + joined(numberedNames(returned->names)));
        if (const QByteArray answer = entry.answers.value(method.name()).signal; !answer.isEmpty())
            printLine(QLatin1String("      answered by ") + QLatin1String(answer));
    }
}

void printDescription(const FacilityEntry &entry)
{
    printLine(painted(Paint::Bold, entry.name) + QLatin1String(": ") + entry.help);
    printLine(QLatin1String("class ") + QLatin1String(entry.type->className()));
    if (!entry.aliases.isEmpty())
        printLine(QLatin1String("also called ") + joined(entry.aliases));
    if (!entry.selector.isEmpty()) {
        printLine(QLatin1String("--") + entry.selector + QLatin1String(" is one of ")
            + enumerated(entry.instances()));
    }
    if (!entry.objects.isEmpty())
        printLine(QLatin1String("reads ") + joined(entry.objects));

    printHeading("Properties");
    for (const QMetaProperty &property : meta::propertiesOf(entry.type)) {
        const QStringList traits = meta::traitsOf(property);
        printLine(QLatin1String("  ") + QLatin1String(property.name()) + QLatin1String(": ")
            + meta::typeText(property.metaType())
            + (traits.isEmpty() ? QString() : QString(QLatin1String(" (") + joined(traits) + u')')));
        if (const QMetaEnum enumeration = meta::enumOf(property.metaType()); enumeration.isValid())
            printLine(QLatin1String("      ") + joined(numberedNames(enumeration)));
    }
    for (const QByteArray &name : entry.dynamicProperties)
        printLine(QLatin1String("  ") + QLatin1String(name) + QLatin1String(": dynamic, for call --set"));
    if (!meta::methodsOf(entry.type).empty()) {
        printHeading("Methods");
        printMethods(entry);
    }
    if (const auto all = meta::signalsOf(entry.type); !all.empty()) {
        printHeading("Signals");
        for (const QMetaMethod &signal : all)
            printLine(QLatin1String("  ") + meta::signatureText(signal));
    }
}

} // namespace oz::tools
