#include "PythonStub.hpp"

#include "VerbParameters.hpp"
#include "scenario/PublicValues.hpp"

#include <QMap>

#include <algorithm>

namespace oz::pages {

using namespace services;

namespace {

const QString Name = QStringLiteral("name");
const QString Instances = QStringLiteral("instances");
const QString None = QStringLiteral(" | None");

QString snakeCase(const QString &name)
{
    return QString(name).replace(u'-', u'_');
}

QString className(const QString &part)
{
    QString name;
    for (const QString &word : part.split(u'-'))
        name += capitalised(word);
    return name;
}

QString literal(const QStringList &words)
{
    QStringList quoted;
    for (const QString &word : words)
        quoted.append(u'"' + word + u'"');
    return QLatin1String("Literal[") + quoted.join(QLatin1String(", ")) + u']';
}

QString typeOf(const Parameter &parameter)
{
    static const QMap<Parameter::Type, QString> types{{Parameter::Text, QStringLiteral("str")},
        {Parameter::Texts, QStringLiteral("Sequence[str]")}, {Parameter::Whole, QStringLiteral("int")},
        {Parameter::Number, QStringLiteral("float")},
        {Parameter::NumberOrUnknown, QStringLiteral("float | None")},
        {Parameter::Truth, QStringLiteral("bool")}, {Parameter::Time, QStringLiteral("float | timedelta")}};
    return parameter.words.isEmpty() ? types.value(parameter.type) : literal(parameter.words);
}

QString typeOf(const ValueType &type)
{
    switch (type.kind) {
    case ValueType::Number:
        return QStringLiteral("float");
    case ValueType::Truth:
        return QStringLiteral("bool");
    case ValueType::Word:
        return literal(type.words);
    case ValueType::List:
        return QStringLiteral("Sequence[str]");
    case ValueType::Text:
        return QStringLiteral("str");
    }
    return {};
}

// A class for a part, for each of several things that a part has, or for the faults of either.
class PythonClass
{
public:
    PythonClass(const QString &name, const QString &help, const QString &base = QStringLiteral("Part"))
        : m_name(name), m_base(base), m_help(help)
    {
    }

    void addValue(const QString &name, const Field &field)
    {
        const QString unit = field.type.unit.isEmpty() ? QString() : QLatin1String(", in ") + field.type.unit;
        m_values.insert(name, {typeOf(field.type) + None, capitalised(field.help) + unit + u'.'});
    }
    // What can be assigned to.
    void addSetting(const QString &name, const QString &type, const QString &help)
    {
        const auto published = m_values.constFind(name);
        const bool isPublished = published != m_values.cend();
        QString all = isPublished ? published->type : type;
        if (isPublished && !all.startsWith(type) && type.startsWith(QLatin1String("Literal")))
            all.prepend(QString(type + QLatin1String(" | ")));
        m_values.insert(name, {all, isPublished ? QString(published->help) : help, true});
    }
    [[nodiscard]] bool has(const QString &name) const { return m_values.contains(name); }
    void addMethod(const QString &name, const QList<Parameter> &parameters, const QString &help)
    {
        QStringList declared{QStringLiteral("self")};
        QStringList notes;
        for (const Parameter &each : parameters) {
            declared.append(snakeCase(each.name) + QLatin1String(": ") + typeOf(each)
                + (each.isOptional ? QLatin1String(" = ...") : QLatin1String()));
            if (!each.note.isEmpty())
                notes.append(each.note);
        }
        if (!parameters.isEmpty())
            declared.append(QStringLiteral("/"));
        m_methods.append(
            QStringLiteral("    def %1(%2) -> None: \"\"\"%3%4.\"\"\"\n")
                .arg(snakeCase(name), declared.join(QLatin1String(", ")), help,
                    notes.isEmpty() ? QString()
                                    : QStringLiteral(" (%1)").arg(notes.join(QLatin1String("; ")))));
    }
    void setItem(const QString &itemClass)
    {
        m_methods.append(
            QStringLiteral("    def __getitem__(self, item: str | int, /) -> %1: ...\n").arg(itemClass));
    }

    [[nodiscard]] QString text() const
    {
        QString body;
        for (auto value = m_values.cbegin(); value != m_values.cend(); ++value) {
            const QString form = value->isSettable
                ? QStringLiteral("    %1: %2\n    \"\"\"%3\"\"\"\n")
                : QStringLiteral("    @property\n    def %1(self) -> %2: \"\"\"%3\"\"\"\n");
            body += form.arg(snakeCase(value.key()), value->type, value->help);
        }
        return QStringLiteral("class %1(%2):\n    \"\"\"%3\"\"\"\n").arg(m_name, m_base, m_help) + body
            + m_methods.join(QString());
    }

private:
    struct Value
    {
        QString type;
        QString help;
        bool isSettable = false;
    };

    QString m_name;
    QString m_base;
    QString m_help;
    QMap<QString, Value> m_values;
    QStringList m_methods;
};

// The base class of faults has them.
bool isOfEveryService(const QString &verb)
{
    return verb == u"kill-service" || verb == u"start-service";
}

// The classes of one part.
class PartClasses
{
public:
    PartClasses(const QString &part, const QVariantMap &described, const QVariantMap &phone)
        : m_part(part), m_verbs(described.value(QStringLiteral("verbs")).toList()),
          m_hasInstances(described.contains(Instances)), m_settings(settingsOf(part, phone))
    {
        const QVariantList neighbours = phone.value(QStringLiteral("neighbours")).toList();
        for (const QVariant &each : neighbours) {
            if (const QVariantMap neighbour = each.toMap(); neighbour.value(QStringLiteral("part")) == part)
                m_neighbours.append(neighbour.value(Name).toString());
        }
        const QString several = part + QLatin1String(".*.");
        for (const PublicValue &value : publicValues())
            m_hasItems = m_hasItems || value.name.startsWith(several);
        m_hasItems = m_hasItems || m_hasInstances || !m_neighbours.isEmpty();
    }

    [[nodiscard]] QString text() const
    {
        const QString name = className(m_part);
        const QString item = name + QLatin1String("Item");
        PythonClass whole(name, QStringLiteral("The part `%1`.").arg(m_part));
        addValues(&whole, m_part + u'.');
        if (!m_hasInstances)
            addVerbs(&whole, Kind::Order, 0);
        QString classes;
        if (m_hasItems) {
            PythonClass one(item, QStringLiteral("One of those that `%1` has.").arg(m_part));
            addValues(&one, m_part + QLatin1String(".*."));
            addVerbs(&one, Kind::Order, m_hasInstances ? 0 : 1);
            if (!m_neighbours.isEmpty())
                one.addSetting(QStringLiteral("in-range"), QStringLiteral("bool"),
                    QStringLiteral("Whether it is in range."));
            whole.setItem(item);
            classes = one.text() + u'\n';
        }
        classes += whole.text() + u'\n';
        if (hasFaults())
            classes += faults(name);
        return classes;
    }

    [[nodiscard]] bool hasFaults() const
    {
        return std::any_of(
            m_verbs.begin(), m_verbs.end(), [](const QVariant &verb) { return isFault(verb.toMap()); });
    }

private:
    enum class Kind { Order, Fault };

    static bool isFault(const QVariantMap &verb) { return verb.value(QStringLiteral("fault")).toBool(); }

    [[nodiscard]] QString faults(const QString &name) const
    {
        PythonClass faults(name + QLatin1String("Faults"),
            QStringLiteral("What can go wrong with the service of `%1`.").arg(m_part),
            QStringLiteral("ServiceFaults"));
        addVerbs(&faults, Kind::Fault, 0);
        if (m_hasInstances)
            faults.setItem(name + QLatin1String("Faults"));
        return faults.text() + u'\n';
    }

    // Those whose names begin with \a prefix, without it.
    static void addValues(PythonClass *to, const QString &prefix)
    {
        for (const PublicValue &value : publicValues()) {
            if (value.name.startsWith(prefix) && !value.name.sliced(prefix.size()).startsWith(u'*'))
                to->addValue(value.name.sliced(prefix.size()), *value.field);
        }
    }

    // Those that take at least \a given arguments, which stand before the others.
    void addVerbs(PythonClass *to, Kind kind, int given) const
    {
        for (const QVariant &each : m_verbs) {
            const QVariantMap verb = each.toMap();
            const QString name = verb.value(Name).toString();
            const QList<Parameter> parameters = parametersOf(m_part, verb);
            if (isFault(verb) != (kind == Kind::Fault) || (given && !takesItem(verb))
                || isOfEveryService(name))
                continue;
            const QString help = capitalised(verb.value(QStringLiteral("help")).toString());
            const bool isSetting =
                kind == Kind::Order && !given && parameters.size() == 1 && m_settings.contains(name);
            if (isSetting)
                to->addSetting(name, settingType(name, parameters.first()), help + u'.');
            else if (to->has(name))
                to->addSetting(
                    name, parameters.isEmpty() ? QStringLiteral("bool") : typeOf(parameters.first()), {});
            else
                to->addMethod(name, parameters.sliced(given), help);
        }
    }

    // A number that no table describes is read back as its text.
    [[nodiscard]] QString settingType(const QString &verb, const Parameter &parameter) const
    {
        const bool isText = parameter.type == Parameter::Number && !settingOf(m_part, verb);
        return (isText ? QLatin1String("str | ") : QLatin1String()) + typeOf(parameter);
    }

    // Whether the first argument of a verb is one of the things that the part has.
    [[nodiscard]] bool takesItem(const QVariantMap &verb) const
    {
        const QString first = verb.value(QStringLiteral("arguments")).toStringList().value(0);
        const QVariantMap choice = verb.value(QStringLiteral("choices")).toMap().value(first).toMap();
        const QStringList words = choice.value(QStringLiteral("words")).toStringList();
        return !words.isEmpty() && (m_neighbours.isEmpty() || words.contains(m_neighbours.first()));
    }

    // The values of the verbs; all instances have the same verbs.
    static QVariantMap settingsOf(const QString &part, const QVariantMap &phone)
    {
        const QVariantMap values = phone.value(QStringLiteral("values")).toMap().value(part).toMap();
        return values.isEmpty() ? QVariantMap() : values.first().toMap();
    }

    QString m_part;
    QVariantList m_verbs;
    bool m_hasInstances;
    QVariantMap m_settings;
    QStringList m_neighbours;
    bool m_hasItems = false;
};

QString accessor(const QString &part, const QString &type)
{
    return QStringLiteral("    @property\n    def %1(self) -> %2: ...\n").arg(snakeCase(part), type);
}

} // namespace

QString pythonStub(const QVariantMap &parts, const QVariantMap &phone)
{
    QString classes;
    QString accessors;
    QString faults;
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const PartClasses made(part.key(), part->toMap(), phone);
        classes += made.text();
        accessors += accessor(part.key(), className(part.key()));
        if (made.hasFaults())
            faults += accessor(part.key(), className(part.key()) + QLatin1String("Faults"));
    }
    return QStringLiteral(R"(# Made from the facilities' tables by `./oz pages`.
from collections.abc import Iterator, Sequence
from datetime import timedelta
from typing import Literal

from .description import Description

class Part:
    """What all parts have."""
    def tell(self, verb: str, *arguments: object) -> None:
        """Tells it a verb of `ozdevice sim` with its arguments."""
    def __iter__(self) -> Iterator[str]: ...
    def __contains__(self, item: object) -> bool: ...

class ServiceFaults(Part):
    """What can go wrong with any service."""
    def kill_service(self) -> None: """Ends the service, as if it had crashed."""
    def start_service(self) -> None: """Starts it again."""

%1class Faults:
    """What can go wrong with the services of each part."""
%2
class Parts:
    """A phone's parts."""
    _description: Description
    def __init__(self, description: Description) -> None: ...
    @property
    def faults(self) -> Faults: ...
%3)")
        .arg(classes, faults, accessors);
}

} // namespace oz::pages
