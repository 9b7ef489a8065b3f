#include "KitParts.hpp"

#include "VerbParameters.hpp"

#include <QMap>

namespace oz::pages {

using namespace services;

namespace {

const QString Instances = QStringLiteral("instances");

// "peer-appears" as "peerAppears", or "PeerAppears".
QString camelCase(const QString &name, bool startsUpper = false)
{
    QString text;
    for (const QString &word : name.toLower().split(u'-'))
        text += text.isEmpty() && !startsUpper ? word : QString(word.left(1).toUpper() + word.mid(1));
    return text;
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

QString typeOf(Parameter::Type type)
{
    static const QMap<Parameter::Type, QString> types{{Parameter::Text, QStringLiteral("const QString &")},
        {Parameter::Texts, QStringLiteral("const QStringList &")}, {Parameter::Whole, QStringLiteral("int ")},
        {Parameter::Number, QStringLiteral("double ")},
        {Parameter::NumberOrUnknown, QStringLiteral("std::optional<double> ")},
        {Parameter::Truth, QStringLiteral("bool ")},
        {Parameter::Time, QStringLiteral("std::chrono::milliseconds ")}};
    return types.value(type);
}

bool isText(const Parameter &parameter)
{
    return parameter.type == Parameter::Text || parameter.type == Parameter::Texts;
}

QString declarationOf(const Parameter &parameter)
{
    const QString initial = isText(parameter) ? QStringLiteral(" = {}") : QStringLiteral(" = 0");
    return typeOf(parameter.type) + camelCase(parameter.name) + (parameter.isOptional ? initial : QString());
}

// The expression that makes the argument.
QString wordOf(const Parameter &parameter)
{
    const bool mayBeLeftOut = parameter.isOptional && isText(parameter);
    return (mayBeLeftOut ? QLatin1String("optionalWord(") : QLatin1String("word("))
        + camelCase(parameter.name) + u')';
}

// The name of the function for a verb.
QString functionOf(const QString &part, const QString &verb, const QStringList &arguments)
{
    if (const Setting *setting = settingOf(part, verb))
        return QLatin1String("set") + camelCase(setting->key, true);
    const bool isSwitch = arguments == QStringList{QStringLiteral("on|off")};
    return isSwitch ? QLatin1String("set") + camelCase(verb, true) : camelCase(verb);
}

// The function for a verb; \a former is the verb's former name.
QStringList callOf(const QString &part, const QVariantMap &verb, const QString &former)
{
    const QString name = verb.value(QStringLiteral("name")).toString();
    const QStringList arguments = verb.value(QStringLiteral("arguments")).toStringList();
    const QString function = functionOf(part, name, arguments);
    QStringList declared;
    QStringList names;
    QStringList words;
    QStringList notes;
    for (const Parameter &each : parametersOf(part, verb)) {
        declared.append(declarationOf(each));
        names.append(camelCase(each.name));
        words.append(wordOf(each));
        if (!each.note.isEmpty())
            notes.append(each.note);
    }
    const QString help = capitalised(verb.value(QStringLiteral("help")).toString());
    const QString note = notes.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(notes.join(u"; "));
    const QString given = words.isEmpty() ? QString() : QStringLiteral(", {%1}").arg(words.join(u", "));
    QStringList lines{QStringLiteral("    /*! %1%2. */").arg(help, note),
        QStringLiteral("    void %1(%2) { tell(\"%3\"%4); }")
            .arg(function, declared.join(u", "), name, given)};
    // A setting's function is named after its key, and keeps its name.
    const QString before = former.isEmpty() ? function : functionOf(part, former, arguments);
    if (before != function && !settingOf(part, name)) {
        lines.append({QStringLiteral("    /*! \\deprecated The former name of %1(). */").arg(function),
            QStringLiteral("    void %1(%2) { %3(%4); }")
                .arg(before, declared.join(u", "), function, names.join(u", "))});
    }
    return lines;
}

QString className(const QString &part)
{
    return QLatin1String("Phone") + camelCase(part, true);
}

QStringList classOf(const QString &part, const QVariantMap &described)
{
    const QVariantList verbs = described.value(QStringLiteral("verbs")).toList();
    const QVariantMap former = described.value(QStringLiteral("former-verbs")).toMap();
    QStringList names;
    QStringList calls;
    for (const QVariant &each : verbs) {
        const QVariantMap verb = each.toMap();
        names.append(verb.value(QStringLiteral("name")).toString());
        if (!isOfBase(names.last()))
            calls += callOf(part, verb, former.key(names.last()));
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
