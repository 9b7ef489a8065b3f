#include "KitParts.hpp"

#include "Tables.hpp"
#include "facility/Facility.hpp"

#include <QMap>

namespace oz::pages {

using namespace services;

namespace {

struct Parameter
{
    QString type;
    QString name;
    QString word = {}; // the expression that makes the argument
    QString initial = {}; // empty if it must be given
    QString note = {}; // its range or words
};

const QString TextType = QStringLiteral("const QString &");
const QString ListType = QStringLiteral("const QStringList &");
const QString ListEnd = QStringLiteral(",..."); // of an argument's name

// "peer-appears" as "peerAppears", or "PeerAppears".
QString camelCase(const QString &name, bool startsUpper = false)
{
    QString text;
    for (const QString &word : name.toLower().split(u'-'))
        text += text.isEmpty() && !startsUpper ? word : QString(word.left(1).toUpper() + word.mid(1));
    return text;
}

QString capitalised(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

QString baseOf(const QString &part, const QStringList &verbs)
{
    // These also have functions that are no verbs.
    static const QMap<QString, QString> own{
        {QStringLiteral("data-profile"), QStringLiteral("DataProfilePart")},
        {QStringLiteral("led"), QStringLiteral("LedPart")},
        {QStringLiteral("vibration"), QStringLiteral("VibrationPart")}};
    if (own.contains(part))
        return own.value(part);
    if (verbs.contains(QLatin1String("die-on-request")))
        return QStringLiteral("FaultyPart");
    if (verbs.contains(QLatin1String("never-answer")))
        return QStringLiteral("AnsweringPart");
    return verbs.contains(QLatin1String("kill-service")) ? QStringLiteral("ServicePart")
                                                         : QStringLiteral("PhonePart");
}

// The verbs of the bases.
bool isOfBase(const QString &verb)
{
    static const QStringList verbs{QStringLiteral("kill-service"), QStringLiteral("start-service"),
        QStringLiteral("answer-late"), QStringLiteral("never-answer"), QStringLiteral("fail-with"),
        QStringLiteral("die-on-request"), QStringLiteral("answer-rubbish")};
    return verbs.contains(verb);
}

// The setting whose value \a verb takes; null for any other verb.
const Setting *settingOf(const QString &part, const QString &verb)
{
    for (const Facility &facility : facilities()) {
        if (facility.name != part)
            continue;
        for (const auto *settings : {&facility.settings, &facility.instances.settings}) {
            for (const Setting &setting : *settings) {
                for (const Order &order : setting.orders) {
                    if (order.verb == verb && !order.argument.isEmpty())
                        return &setting;
                }
            }
        }
    }
    return nullptr;
}

// What an argument that is not the value of a setting takes, by its name.
QString typeOf(const QString &argument)
{
    static const QMap<QString, QString> types{{QStringLiteral("on|off"), QStringLiteral("bool ")},
        {QStringLiteral("CODE"), QStringLiteral("int ")}, {QStringLiteral("DEGREES"), QStringLiteral("int ")},
        {QStringLiteral("ERRNO"), QStringLiteral("int ")},
        {QStringLiteral("FACTOR"), QStringLiteral("double ")},
        {QStringLiteral("HEIGHT"), QStringLiteral("int ")}, {QStringLiteral("ID"), QStringLiteral("int ")},
        {QStringLiteral("MM-HEIGHT"), QStringLiteral("int ")},
        {QStringLiteral("MM-WIDTH"), QStringLiteral("int ")},
        {QStringLiteral("SECONDS"), QStringLiteral("std::chrono::milliseconds ")},
        {QStringLiteral("WIDTH"), QStringLiteral("int ")}};
    return types.value(argument, argument.endsWith(ListEnd) ? ListType : TextType);
}

// An argument, as the verb names it: "PERCENT", "[PEER,...]", "on|off".
Parameter parameterOf(const QString &argument)
{
    const bool isOptional = argument.startsWith(u'[');
    const QString plain = isOptional ? argument.sliced(1).chopped(1) : argument;
    Parameter parameter{typeOf(plain), camelCase(plain)};
    if (plain == u"ERRNO") { // a macro
        parameter.name = QStringLiteral("error");
    } else if (plain == u"SECONDS") {
        parameter.name = QStringLiteral("time");
    } else if (plain.endsWith(ListEnd)) {
        parameter.name = QStringLiteral("names");
    } else if (plain == u"on|off") {
        parameter.name = QStringLiteral("on");
    } else if (plain.contains(u'|')) {
        parameter.name = QStringLiteral("value");
        parameter.note = QString(plain).replace(u'|', QLatin1String(", "));
    }
    const bool isNumber = parameter.type != TextType && parameter.type != ListType;
    parameter.word = (isOptional && !isNumber ? QLatin1String("optionalWord(") : QLatin1String("word("))
        + parameter.name + u')';
    if (isOptional)
        parameter.initial = isNumber ? QStringLiteral("0") : QStringLiteral("{}");
    return parameter;
}

// The argument that is the value of a setting.
Parameter parameterOf(const Setting &setting, const QString &argument)
{
    Parameter parameter = parameterOf(argument);
    ValueType type = setting.type;
    if (type.kind == ValueType::Number) {
        parameter.type = type.isWhole ? QStringLiteral("int ") : QStringLiteral("double ");
        if (type.mayBeUnknown)
            parameter.type = QStringLiteral("std::optional<double> ");
    }
    const bool isAny = type.kind == ValueType::Truth || (type.kind == ValueType::Text && type.form.isEmpty());
    if (!isAny) {
        const bool mayBeUnknown = std::exchange(type.mayBeUnknown, false);
        parameter.note = accepted(type);
        if (mayBeUnknown)
            parameter.note += QLatin1String("; unknown without a value");
    }
    return parameter;
}

QStringList callOf(const QString &part, const QVariantMap &verb)
{
    const QString name = verb.value(QStringLiteral("name")).toString();
    const QStringList arguments = verb.value(QStringLiteral("arguments")).toStringList();
    const Setting *setting = settingOf(part, name);
    QList<Parameter> parameters;
    for (const QString &argument : arguments)
        parameters.append(setting ? parameterOf(*setting, argument) : parameterOf(argument));
    QString function = camelCase(name);
    if (setting)
        function = QLatin1String("set") + camelCase(setting->key, true);
    else if (arguments == QStringList{QStringLiteral("on|off")})
        function = QLatin1String("set") + camelCase(name, true);
    QStringList declared;
    QStringList words;
    QStringList notes;
    for (const Parameter &each : parameters) {
        declared.append(each.type + each.name
            + (each.initial.isEmpty() ? QString() : QLatin1String(" = ") + each.initial));
        words.append(each.word);
        if (!each.note.isEmpty())
            notes.append(each.note);
    }
    QString help = capitalised(verb.value(QStringLiteral("help")).toString());
    if (!notes.isEmpty())
        help += QLatin1String(" (") + notes.join(QLatin1String("; ")) + u')';
    const QString told = u'"' + name + u'"'
        + (words.isEmpty() ? QString() : QLatin1String(", {") + words.join(QLatin1String(", ")) + u'}');
    return {QLatin1String("    /*! ") + help + QLatin1String(". */"),
        QLatin1String("    void ") + function + u'(' + declared.join(QLatin1String(", "))
            + QLatin1String(") { tell(") + told + QLatin1String("); }")};
}

QString className(const QString &part)
{
    return QLatin1String("Phone") + camelCase(part, true);
}

QStringList classOf(const QString &part, const QVariantMap &described)
{
    const QVariantList verbs = described.value(QStringLiteral("verbs")).toList();
    QStringList names;
    for (const QVariant &verb : verbs)
        names.append(verb.toMap().value(QStringLiteral("name")).toString());
    const QString base = baseOf(part, names);
    const QString instance =
        described.contains(QStringLiteral("instances")) ? QStringLiteral(" NAME") : QString();
    QStringList lines{
        QLatin1String("/*! What `ozdevice sim ") + part + instance + QLatin1String("` can do. */"),
        QLatin1String("class ") + className(part) + QLatin1String(" : public ") + base, QStringLiteral("{"),
        QStringLiteral("public:"), QLatin1String("    using ") + base + QLatin1String("::") + base + u';'};
    for (const QVariant &verb : verbs) {
        if (!isOfBase(verb.toMap().value(QStringLiteral("name")).toString()))
            lines += callOf(part, verb.toMap());
    }
    return lines << QStringLiteral("};") << QString();
}

QString accessorOf(const QString &part, const QVariantMap &described)
{
    const bool isOneOfSeveral = described.contains(QStringLiteral("instances"));
    return QLatin1String("    [[nodiscard]] ") + className(part) + u' ' + camelCase(part)
        + (isOneOfSeveral ? QLatin1String("(const QString &name)") : QLatin1String("()"))
        + QLatin1String(" { return {*m_link, QStringLiteral(\"") + part + QLatin1String("\")")
        + (isOneOfSeveral ? QLatin1String(", name}; }") : QLatin1String("}; }"));
}

} // namespace

QString phonePartsHeader(const QVariantMap &parts)
{
    QStringList lines = QStringLiteral(R"(// Made from the facilities' tables by `./oz pages`.
// clang-format off
#pragma once

#include <oz/testing/PhonePart.hpp>

namespace oz::testing {
)")
                            .split(u'\n');
    QStringList accessors;
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const QVariantMap described = part->toMap();
        lines += classOf(part.key(), described);
        accessors.append(QLatin1String("    /*! The part `") + part.key()
            + (described.contains(QStringLiteral("instances"))
                    ? QLatin1String("` that the phone's file calls \\a name. */")
                    : QLatin1String("`. */")));
        accessors.append(accessorOf(part.key(), described));
    }
    lines += QStringLiteral(R"(/*! The parts of a test's phone. */
class PhoneParts
{
public:)")
                 .split(u'\n');
    lines += accessors;
    lines += QStringLiteral(R"(
protected:
    PhoneParts() = default;
    /*! Sets what leads to the phone. */
    void setLink(PhoneLink &link) { m_link = &link; }

private:
    PhoneLink *m_link = nullptr;
};

} // namespace oz::testing
)")
                 .split(u'\n');
    return lines.join(u'\n');
}

} // namespace oz::pages
