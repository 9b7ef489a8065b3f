#include "scenario/PublicValues.hpp"

#include "facility/Facility.hpp"
#include "publishing/Tree.hpp"
#include "source/Error.hpp"

#include <oz/PrintableText.hpp>

#include <QRegularExpression>

namespace oz::services {

namespace {

const QString Star = QStringLiteral("*");

// The instance that \a name names where it is one of \a value; nothing where it is none.
std::optional<QString> instanceIn(const QString &name, const PublicValue &value)
{
    if (!value.name.contains(Star))
        return name == value.name ? std::optional(QString()) : std::nullopt;
    const QString before = value.name.section(u'*', 0, 0);
    const QString after = value.name.section(u'*', 1);
    if (!name.startsWith(before) || !name.endsWith(after) || name.size() <= before.size() + after.size())
        return std::nullopt;
    return name.mid(before.size()).chopped(after.size());
}

// Those of \a known that belong to the facility of \a name, else the facilities.
QString knownFor(const QString &name, const QStringList &known)
{
    const QString facility = name.section(u'.', 0, 0) + u'.';
    QStringList near = known.filter(QRegularExpression(u'^' + QRegularExpression::escape(facility)));
    if (near.isEmpty()) {
        for (const QString &each : known)
            near.append(each.section(u'.', 0, 0));
        near.removeDuplicates();
        return QLatin1String("there are those of ") + near.join(QLatin1String(", "));
    }
    return QLatin1String("there is ") + near.join(QLatin1String(", "));
}

QString helpOf(const Field &field)
{
    const QString &unit = field.type.unit;
    return unit.isEmpty() ? field.help : QString(field.help + QLatin1String(", in ") + unit);
}

} // namespace

QVariant PublicValueUse::now(const Tree &tree) const
{
    return field->in(tree.told(field->path), instance);
}

const std::vector<PublicValue> &publicValues()
{
    static const std::vector<PublicValue> all = [] {
        std::vector<PublicValue> values;
        for (const Facility &facility : facilities()) {
            for (const Field &field : facility.fields) {
                if (!field.type.isPrivate)
                    values.push_back({field.fullName(facility.name), &field});
            }
        }
        return values;
    }();
    return all;
}

PublicValueUse publicValueNamed(const QString &name)
{
    QStringList known;
    for (const PublicValue &value : publicValues()) {
        if (const auto instance = instanceIn(name, value))
            return {value.field, *instance};
        known.append(value.name);
    }
    throw Error(QLatin1String("there is no value '") + name + QLatin1String("'; ") + knownFor(name, known));
}

const std::vector<AskedRequest> &publicRequests()
{
    static const std::vector<AskedRequest> all = [] {
        std::vector<AskedRequest> requests;
        for (const Facility &facility : facilities()) {
            for (AskedRequest request : facility.requests) {
                request.name.prepend(QString(facility.name + u'.'));
                requests.push_back(request);
            }
        }
        return requests;
    }();
    return all;
}

const AskedRequest &publicRequestNamed(const QString &name)
{
    QStringList known;
    for (const AskedRequest &request : publicRequests()) {
        if (request.name == name)
            return request;
        known.append(request.name);
    }
    throw Error(QLatin1String("there is no request '") + name + QLatin1String("'; ") + knownFor(name, known));
}

QString publicRequestText(const QString &path, const QVariantMap &message)
{
    constexpr qsizetype MostOfValue = 80; // characters
    for (const AskedRequest &request : publicRequests()) {
        const QVariant fields = request.read(path, message);
        if (!fields.isValid())
            continue;
        QString text = request.name;
        const QVariantMap values = fields.toMap();
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            text += u' ' + value.key() + u'=' + printableText(value->toString().left(MostOfValue));
        return text;
    }
    return {};
}

QVariantMap describePublic(const Tree &tree)
{
    QVariantList values;
    for (const PublicValue &value : publicValues()) {
        QVariantMap described{{QStringLiteral("name"), value.name},
            {QStringLiteral("type"), value.field->type.text()},
            {QStringLiteral("help"), helpOf(*value.field)}};
        const QVariant now =
            value.name.contains(Star) ? QVariant() : PublicValueUse{value.field, {}}.now(tree);
        if (now.isValid())
            described.insert(QStringLiteral("now"), now);
        values.append(described);
    }
    QVariantList requests;
    for (const AskedRequest &request : publicRequests()) {
        QStringList fields;
        for (const AskedRequest::Part &field : request.parts)
            fields.append(field.name);
        requests.append(QVariantMap{{QStringLiteral("name"), request.name},
            {QStringLiteral("fields"), fields}, {QStringLiteral("help"), request.help}});
    }
    return {{QStringLiteral("values"), values}, {QStringLiteral("requests"), requests}};
}

} // namespace oz::services
