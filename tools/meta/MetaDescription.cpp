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
    return name.isEmpty() ? "argument"_L1 + QString::number(index + 1) : QString::fromLatin1(name);
}

void addEnumerators(QJsonObject *description, QMetaType type)
{
    if (const QStringList names = enumeratorsOf(type); !names.isEmpty())
        description->insert(u"enumerators"_s, QJsonArray::fromStringList(names));
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
    return QLatin1String(method.name()) + u'(' + parameters.join(", "_L1) + u')';
}

QStringList traitsOf(const QMetaProperty &property)
{
    QStringList traits;
    if (property.isConstant())
        traits.append(u"constant"_s);
    if (property.isWritable())
        traits.append(u"writable"_s);
    if (const int revision = minorRevision(property.revision()))
        traits.append("revision "_L1 + QString::number(revision));
    return traits;
}

QJsonObject describe(const QMetaProperty &property)
{
    QJsonObject description{{u"name"_s, QLatin1String(property.name())},
        {u"type"_s, typeText(property.metaType())}, {u"constant"_s, property.isConstant()},
        {u"writable"_s, property.isWritable()}, {u"revision"_s, minorRevision(property.revision())}};
    if (property.hasNotifySignal()) {
        description.insert(u"signal"_s, QString::fromLatin1(property.notifySignal().methodSignature()));
    }
    addEnumerators(&description, property.metaType());
    return description;
}

QJsonObject describe(const QMetaMethod &method)
{
    QJsonArray parameters;
    for (int i = 0; i < method.parameterCount(); ++i) {
        QJsonObject parameter{
            {u"name"_s, parameterName(method, i)}, {u"type"_s, typeText(method.parameterMetaType(i))}};
        addEnumerators(&parameter, method.parameterMetaType(i));
        parameters.append(parameter);
    }
    QJsonObject description{{u"name"_s, QLatin1String(method.name())},
        {u"signature"_s, QString::fromLatin1(method.methodSignature())}, {u"parameters"_s, parameters},
        {u"revision"_s, minorRevision(method.revision())}};
    if (method.returnMetaType().id() != QMetaType::Void)
        description.insert(u"returns"_s, typeText(method.returnMetaType()));
    return description;
}

bool isNumericTwin(const QMetaMethod &signal)
{
    const QMetaObject *type = signal.enclosingMetaObject();
    for (int i = type->methodOffset(); i < signal.methodIndex(); ++i) {
        const QMetaMethod other = type->method(i);
        if (other.methodType() == QMetaMethod::Signal && other.name() == signal.name()
            && other.parameterCount() == signal.parameterCount())
            return true;
    }
    return false;
}

} // namespace oz::meta
