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
const QString Instances = QStringLiteral("instances");

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

// The class from which a part's class inherits. Some have further functions, which read values.
QString baseOf(const QString &part, const QStringList &verbs)
{
    static const QMap<QString, QString> own{{QStringLiteral("data-profile"), QStringLiteral("DataProfile")},
        {QStringLiteral("led"), QStringLiteral("Led")},
        {QStringLiteral("vibration"), QStringLiteral("Vibration")}};
    const char *byFaults = verbs.contains(QLatin1String("die-on-request")) ? "Faulty"
        : verbs.contains(QLatin1String("never-answer"))                    ? "Answering"
        : verbs.contains(QLatin1String("kill-service"))                    ? "Service"
                                                                           : "Phone";
    return own.value(part, QLatin1String(byFaults)) + QLatin1String("Part");
}

bool isOfBase(const QString &verb)
{
    static const QStringList verbs = QStringLiteral(
        "kill-service start-service answer-late never-answer fail-with die-on-request answer-rubbish")
                                         .split(u' ');
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

// The type of an argument that is not the value of a setting, by its name.
QString typeOf(const QString &argument)
{
    static const QStringList integers =
        QStringLiteral("CODE DEGREES ERRNO HEIGHT ID MM-HEIGHT MM-WIDTH WIDTH").split(u' ');
    static const QMap<QString, QString> others{{QStringLiteral("on|off"), QStringLiteral("bool ")},
        {QStringLiteral("FACTOR"), QStringLiteral("double ")},
        {QStringLiteral("SECONDS"), QStringLiteral("std::chrono::milliseconds ")}};
    if (integers.contains(argument))
        return QStringLiteral("int ");
    return others.value(argument, argument.endsWith(ListEnd) ? ListType : TextType);
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
    const QString help = capitalised(verb.value(QStringLiteral("help")).toString());
    const QString note = notes.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(notes.join(u"; "));
    const QString given = words.isEmpty() ? QString() : QStringLiteral(", {%1}").arg(words.join(u", "));
    return {QStringLiteral("    /*! %1%2. */").arg(help, note),
        QStringLiteral("    void %1(%2) { tell(\"%3\"%4); }")
            .arg(function, declared.join(u", "), name, given)};
}

QString className(const QString &part)
{
    return QLatin1String("Phone") + camelCase(part, true);
}

QStringList classOf(const QString &part, const QVariantMap &described)
{
    const QVariantList verbs = described.value(QStringLiteral("verbs")).toList();
    QStringList names;
    QStringList calls;
    for (const QVariant &each : verbs) {
        const QVariantMap verb = each.toMap();
        names.append(verb.value(QStringLiteral("name")).toString());
        if (!isOfBase(names.last()))
            calls += callOf(part, verb);
    }
    const char *instance = described.contains(Instances) ? " NAME" : "";
    return QStringLiteral("/*! The verbs of `ozdevice sim %1%2`. */\nclass %3 : public %4\n{\npublic:\n"
                          "    using %4::%4;\n%5};\n")
        .arg(part, QLatin1String(instance), className(part), baseOf(part, names),
            calls.isEmpty() ? QString() : QString(calls.join(u'\n') + u'\n'))
        .split(u'\n');
}

QStringList accessorOf(const QString &part, const QVariantMap &described)
{
    const bool isOneOfSeveral = described.contains(Instances);
    const QString form = isOneOfSeveral
        ? QStringLiteral("    /*! The part `%1` that the phone's file calls \\a name. */\n"
                         "    [[nodiscard]] %2 %3(const QString &name) { return {*m_link, "
                         "QStringLiteral(\"%1\"), name}; }")
        : QStringLiteral("    /*! The part `%1`. */\n"
                         "    [[nodiscard]] %2 %3() { return {*m_link, QStringLiteral(\"%1\")}; }");
    return form.arg(part, className(part), camelCase(part)).split(u'\n');
}

} // namespace

QString phonePartsHeader(const QVariantMap &parts)
{
    QStringList classes;
    QStringList accessors;
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        classes += classOf(part.key(), part->toMap());
        accessors += accessorOf(part.key(), part->toMap());
    }
    return QStringLiteral(R"(// Made from the facilities' tables by `./oz pages`.
// clang-format off
#pragma once

#include <oz/testing/PhonePart.hpp>

namespace oz::testing {

%1
/*! The parts of a test's phone. */
class PhoneParts
{
public:
%2

protected:
    PhoneParts() = default;
    /*! Sets what leads to the phone. */
    void setLink(PhoneLink &link) { m_link = &link; }

private:
    PhoneLink *m_link = nullptr;
};

} // namespace oz::testing
)")
        .arg(classes.join(u'\n'), accessors.join(u'\n'));
}

} // namespace oz::pages
