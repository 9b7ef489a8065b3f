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
        names.append(
            QLatin1String(enumeration.key(i)) + " ("_L1 + QString::number(enumeration.value(i)) + u')');
    }
    return names;
}

QString holderOf(const QMetaEnum &enumeration)
{
    return QString::fromLatin1(enumeration.scope()).section(u':', -1);
}

// The type of the result, or the enumeration whose numbers \a method returns.
QString returnedText(const FacilityEntry &entry, const QMetaMethod &method)
{
    const auto returned = entry.calls.returns.constFind(method.name());
    return returned == entry.calls.returns.cend() ? meta::typeText(method.returnMetaType())
                                                  : holderOf(returned->names);
}

void printHeading(const char *heading)
{
    printLine({});
    printLine(painted(Paint::Bold, QLatin1String(heading)));
}

QString joined(const QStringList &words)
{
    return words.join(", "_L1);
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
        if (const auto returned = entry.calls.returns.constFind(method.name());
            returned != entry.calls.returns.cend()) {
            QJsonObject values;
            for (int i = 0; i < returned->names.keyCount(); ++i)
                values.insert(QLatin1String(returned->names.key(i)), returned->names.value(i));
            description.insert(u"returns"_s, holderOf(returned->names));
            description.insert(u"results"_s, values);
        }
        if (const QByteArray answer = entry.calls.answers.value(method.name()).signal; !answer.isEmpty())
            description.insert(u"answeredBy"_s, QString::fromLatin1(answer));
        methods.append(description);
    }
    QJsonArray heard;
    for (const QMetaMethod &signal : meta::signalsOf(entry.type))
        heard.append(meta::describe(signal));
    QStringList dynamicProperties;
    for (const QByteArray &name : entry.calls.dynamicProperties)
        dynamicProperties.append(QString::fromLatin1(name));
    QJsonObject description{{u"name"_s, entry.name},
        {u"aliases"_s, QJsonArray::fromStringList(entry.aliases)},
        {u"class"_s, QLatin1String(entry.type->className())}, {u"help"_s, entry.help},
        {u"objects"_s, QJsonArray::fromStringList(entry.objects)}, {u"properties"_s, properties},
        {u"methods"_s, methods}, {u"signals"_s, heard},
        {u"dynamicProperties"_s, QJsonArray::fromStringList(dynamicProperties)}};
    if (!entry.selector.isEmpty()) {
        description.insert(u"selector"_s, entry.selector);
        description.insert(u"instances"_s, QJsonArray::fromStringList(entry.instances()));
    }
    return description;
}

void printMethods(const FacilityEntry &entry)
{
    for (const QMetaMethod &method : meta::methodsOf(entry.type)) {
        QString line = "  "_L1 + meta::signatureText(method);
        if (method.returnMetaType().id() != QMetaType::Void)
            line += ": "_L1 + returnedText(entry, method);
        printLine(line);
        for (int i = 0; i < method.parameterCount(); ++i) {
            const QMetaType type = method.parameterMetaType(i);
            if (meta::enumOf(type).isValid()) {
                printLine("      "_L1 + QString::fromLatin1(method.parameterNames().value(i)) + " is "_L1
                    + meta::expectation(type));
            }
        }
        if (const auto returned = entry.calls.returns.constFind(method.name());
            returned != entry.calls.returns.cend())
            printLine("      returns "_L1 + joined(numberedNames(returned->names)));
        if (const QByteArray answer = entry.calls.answers.value(method.name()).signal; !answer.isEmpty())
            printLine("      answered by "_L1 + QLatin1String(answer));
    }
}

void printDescription(const FacilityEntry &entry)
{
    printLine(painted(Paint::Bold, entry.name) + ": "_L1 + entry.help);
    printLine("class "_L1 + QLatin1String(entry.type->className()));
    if (!entry.aliases.isEmpty())
        printLine("also called "_L1 + joined(entry.aliases));
    if (!entry.selector.isEmpty()) {
        printLine("--"_L1 + entry.selector + " is one of "_L1 + enumerated(entry.instances()));
    }
    if (!entry.objects.isEmpty())
        printLine("reads "_L1 + joined(entry.objects));

    printHeading("Properties");
    for (const QMetaProperty &property : meta::propertiesOf(entry.type)) {
        const QStringList traits = meta::traitsOf(property);
        printLine("  "_L1 + QLatin1String(property.name()) + ": "_L1 + meta::typeText(property.metaType())
            + (traits.isEmpty() ? QString() : QString(" ("_L1 + joined(traits) + u')')));
        if (const QMetaEnum enumeration = meta::enumOf(property.metaType()); enumeration.isValid())
            printLine("      "_L1 + joined(numberedNames(enumeration)));
    }
    for (const QByteArray &name : entry.calls.dynamicProperties)
        printLine("  "_L1 + QLatin1String(name) + ": dynamic, for call --set"_L1);
    if (!meta::methodsOf(entry.type).empty()) {
        printHeading("Methods");
        printMethods(entry);
    }
    if (const auto all = meta::signalsOf(entry.type); !all.empty()) {
        printHeading("Signals");
        for (const QMetaMethod &signal : all)
            printLine("  "_L1 + meta::signatureText(signal));
    }
}

} // namespace oz::tools
