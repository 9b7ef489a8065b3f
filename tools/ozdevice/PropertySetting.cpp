#include "ozdevice/PropertySetting.hpp"

#include "facilities/CommandError.hpp"
#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"

namespace oz::tools {

PropertySetting::PropertySetting(
    const FacilityEntry &entry, const QString &name, const std::optional<QString> &text)
{
    if (text && entry.calls.dynamicProperties.contains(name.toUtf8())) {
        m_name = name.toUtf8();
        m_value = *text;
        return;
    }
    const int index = entry.type->indexOfProperty(name.toUtf8().constData());
    if (index < QObject::staticMetaObject.propertyCount()) {
        QStringList names;
        for (const QMetaProperty &property : meta::propertiesOf(entry.type))
            names.append(QLatin1String(property.name()));
        throw CommandError(WrongUse, unknownText(entry.name + " has no property"_L1, name, names));
    }
    m_property = entry.type->property(index);
    const QString title = entry.name + ": "_L1 + name;
    if (!m_property.isWritable())
        throw CommandError(WrongUse, title + " is read-only"_L1);
    const QString expected = meta::expectation(m_property.metaType());
    if (!text)
        throw CommandError(WrongUse, title + " takes one value, "_L1 + expected);
    const auto value = meta::parseValue(*text, m_property.metaType());
    if (!value) {
        throw CommandError(WrongUse, title + " is "_L1 + expected + ", not '"_L1 + *text + u'\'');
    }
    m_value = *value;
}

PropertySetting PropertySetting::parse(const FacilityEntry &entry, const QString &assignment)
{
    const bool hasValue = assignment.contains(u'=');
    return {entry, assignment.section(u'=', 0, 0),
        hasValue ? std::optional(assignment.section(u'=', 1)) : std::nullopt};
}

void PropertySetting::applyTo(const FacilityInstance &instance) const
{
    if (!m_name.isEmpty()) {
        instance.object()->setProperty(m_name.constData(), m_value);
    } else if (!m_property.write(instance.object(), m_value)) {
        throw CommandError(
            Failed, instance.title() + ": "_L1 + QLatin1String(m_property.name()) + " was not set"_L1);
    }
}

QStringList PropertySetting::namesOf(const FacilityEntry &entry)
{
    QStringList names;
    for (const QMetaProperty &property : meta::propertiesOf(entry.type)) {
        if (property.isWritable())
            names.append(QLatin1String(property.name()));
    }
    for (const QByteArray &name : entry.calls.dynamicProperties)
        names.append(QLatin1String(name));
    return names;
}

} // namespace oz::tools
