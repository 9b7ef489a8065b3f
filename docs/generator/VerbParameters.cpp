#include "VerbParameters.hpp"

#include "Tables.hpp"

#include <QMap>

#include <utility>

namespace oz::pages {

using namespace services;

namespace {

const QString ListEnd = QStringLiteral(",..."); // of an argument's name

// The type of an argument that is not the value of a setting, by its name.
Parameter::Type typeOf(const QString &argument)
{
    static const QStringList integers =
        QStringLiteral("CODE DEGREES ERRNO HEIGHT ID MILLISECONDS MM-HEIGHT MM-WIDTH WIDTH").split(u' ');
    static const QMap<QString, Parameter::Type> others{{QStringLiteral("on|off"), Parameter::Truth},
        {QStringLiteral("FACTOR"), Parameter::Number}, {QStringLiteral("SECONDS"), Parameter::Time}};
    if (integers.contains(argument))
        return Parameter::Whole;
    return others.value(argument, argument.endsWith(ListEnd) ? Parameter::Texts : Parameter::Text);
}

// An argument, as the verb names it: "PERCENT", "[PEER,...]", "on|off".
Parameter parameterOf(const QString &argument)
{
    const bool isOptional = argument.startsWith(u'[');
    const QString plain = isOptional ? argument.sliced(1).chopped(1) : argument;
    Parameter parameter{typeOf(plain), plain.toLower(), isOptional};
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
        parameter.words = plain.split(u'|');
        parameter.note = parameter.words.join(QLatin1String(", "));
    }
    return parameter;
}

// The argument that is the value of a setting.
Parameter parameterOf(const Setting &setting, const QString &argument)
{
    Parameter parameter = parameterOf(argument);
    ValueType type = setting.type;
    if (type.kind == ValueType::Number) {
        parameter.type = type.mayBeUnknown ? Parameter::NumberOrUnknown
            : type.isWhole                 ? Parameter::Whole
                                           : Parameter::Number;
        parameter.words.clear();
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

} // namespace

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

QList<Parameter> parametersOf(const QString &part, const QVariantMap &verb)
{
    const Setting *setting = settingOf(part, verb.value(QStringLiteral("name")).toString());
    const QStringList arguments = verb.value(QStringLiteral("arguments")).toStringList();
    QList<Parameter> parameters;
    for (const QString &argument : arguments)
        parameters.append(setting ? parameterOf(*setting, argument) : parameterOf(argument));
    return parameters;
}

QString capitalised(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

} // namespace oz::pages
