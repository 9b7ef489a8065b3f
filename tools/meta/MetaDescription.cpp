#include "meta/MetaDescription.hpp"

#include "meta/MetaText.hpp"

#include <QTypeRevision>

namespace oz::meta {

namespace {

int minorRevision(int encoded)
{
    const QTypeRevision revision = QTypeRevision::fromEncodedVersion(encoded);
    return revision.hasMinorVersion() ? revision.minorVersion() : 0;
}

QString parameterName(const QMetaMethod &method, int index)
{
    const QByteArray name = method.parameterNames().value(index);
    return name.isEmpty() ? QLatin1String("argument") + QString::number(index + 1)
                          : QString::fromLatin1(name);
}

void addEnumerators(QJsonObject *description, QMetaType type)
{
    if (const QStringList names = enumeratorsOf(type); !names.isEmpty())
        description->insert(QStringLiteral("enumerators"), QJsonArray::fromStringList(names));
}

} // namespace

std::vector<QMetaProperty> propertiesOf(const QMetaObject *type)
{
    std::vector<QMetaProperty> properties;
    for (int i = QObject::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i)
        properties.push_back(type->property(i));
    return properties;
}

std::vector<QMetaMethod> signalsOf(const QMetaObject *type)
{
    std::vector<QMetaMethod> found;
    for (int i = QObject::staticMetaObject.methodCount(); i < type->methodCount(); ++i) {
        if (type->method(i).methodType() == QMetaMethod::Signal)
            found.push_back(type->method(i));
    }
    return found;
}

std::vector<QMetaMethod> methodsOf(const QMetaObject *type)
{
    std::vector<QMetaMethod> found;
    for (int i = QObject::staticMetaObject.methodCount(); i < type->methodCount(); ++i) {
        const QMetaMethod method = type->method(i);
        if (method.access() == QMetaMethod::Public
            && (method.methodType() == QMetaMethod::Slot || method.methodType() == QMetaMethod::Method))
            found.push_back(method);
    }
    return found;
}

QStringList enumeratorsOf(QMetaType type)
{
    QStringList names;
    const QMetaEnum enumeration = enumOf(type);
    for (int i = 0; enumeration.isValid() && i < enumeration.keyCount(); ++i)
        names.append(QLatin1String(enumeration.key(i)));
    return names;
}

QString signatureText(const QMetaMethod &method)
{
    QStringList parameters;
    for (int i = 0; i < method.parameterCount(); ++i)
        parameters.append(typeText(method.parameterMetaType(i)) + u' ' + parameterName(method, i));
    return QLatin1String(method.name()) + u'(' + parameters.join(QLatin1String(", ")) + u')';
}

QStringList traitsOf(const QMetaProperty &property)
{
    QStringList traits;
    if (property.isConstant())
        traits.append(QStringLiteral("constant"));
    if (property.isWritable())
        traits.append(QStringLiteral("writable"));
    if (const int revision = minorRevision(property.revision()))
        traits.append(QLatin1String("revision ") + QString::number(revision));
    return traits;
}

QJsonObject describe(const QMetaProperty &property)
{
    QJsonObject description{{QStringLiteral("name"), QLatin1String(property.name())},
        {QStringLiteral("type"), typeText(property.metaType())},
        {QStringLiteral("constant"), property.isConstant()},
        {QStringLiteral("writable"), property.isWritable()},
        {QStringLiteral("revision"), minorRevision(property.revision())}};
    if (property.hasNotifySignal()) {
        description.insert(
            QStringLiteral("signal"), QString::fromLatin1(property.notifySignal().methodSignature()));
    }
    addEnumerators(&description, property.metaType());
    return description;
}

QJsonObject describe(const QMetaMethod &method)
{
    QJsonArray parameters;
    for (int i = 0; i < method.parameterCount(); ++i) {
        QJsonObject parameter{{QStringLiteral("name"), parameterName(method, i)},
            {QStringLiteral("type"), typeText(method.parameterMetaType(i))}};
        addEnumerators(&parameter, method.parameterMetaType(i));
        parameters.append(parameter);
    }
    QJsonObject description{{QStringLiteral("name"), QLatin1String(method.name())},
        {QStringLiteral("signature"), QString::fromLatin1(method.methodSignature())},
        {QStringLiteral("parameters"), parameters},
        {QStringLiteral("revision"), minorRevision(method.revision())}};
    if (method.returnMetaType().id() != QMetaType::Void)
        description.insert(QStringLiteral("returns"), typeText(method.returnMetaType()));
    return description;
}

} // namespace oz::meta
