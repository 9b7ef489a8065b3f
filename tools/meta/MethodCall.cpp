#include "meta/MethodCall.hpp"

#include "meta/MetaText.hpp"

#include <array>
#include <vector>

namespace oz::meta {

namespace {

std::vector<QMetaMethod> callable(const QMetaObject *type)
{
    std::vector<QMetaMethod> methods;
    for (int i = QObject::staticMetaObject.methodCount(); i < type->methodCount(); ++i) {
        const QMetaMethod method = type->method(i);
        if (method.access() == QMetaMethod::Public
            && (method.methodType() == QMetaMethod::Slot || method.methodType() == QMetaMethod::Method))
            methods.push_back(method);
    }
    return methods;
}

} // namespace

QStringList MethodCall::namesOf(const QMetaObject *type)
{
    QStringList names;
    for (const QMetaMethod &method : callable(type)) {
        if (const QString name = QString::fromLatin1(method.name()); !names.contains(name))
            names.append(name);
    }
    return names;
}

std::optional<MethodCall> MethodCall::find(
    const QMetaObject *type, const QString &name, const QStringList &words, QString *problem)
{
    QStringList signatures;
    QString mismatch;
    for (const QMetaMethod &method : callable(type)) {
        if (name != QLatin1String(method.name()))
            continue;
        signatures.append(QString::fromLatin1(method.methodSignature()));
        if (method.parameterCount() != words.size())
            continue;
        QVariantList arguments;
        for (int i = 0; i < method.parameterCount(); ++i) {
            const auto value = parseValue(words[i], method.parameterMetaType(i));
            if (!value) {
                mismatch = QLatin1String("argument ") + QString::number(i + 1) + QLatin1String(" of ") + name
                    + QLatin1String(" is ") + expectation(method.parameterMetaType(i))
                    + QLatin1String(", not '") + words[i] + u'\'';
                break;
            }
            arguments.append(*value);
        }
        if (arguments.size() == words.size())
            return MethodCall(method, arguments);
    }
    const QStringList names = namesOf(type);
    if (!mismatch.isEmpty()) {
        *problem = mismatch;
    } else if (!signatures.isEmpty()) {
        *problem = signatures.join(QLatin1String(" or ")) + QLatin1String(" does not take ")
            + QString::number(words.size()) + QLatin1String(" arguments");
    } else {
        *problem = QLatin1String("no method '") + name + QLatin1String("'; ")
            + (names.isEmpty() ? QStringLiteral("it has none")
                               : QString(QLatin1String("it has ") + names.join(QLatin1String(", "))));
    }
    return std::nullopt;
}

QVariant MethodCall::invoke(QObject *object) const
{
    // What QMetaMethod::invoke() does, with values whose types are known only here.
    QVariant result;
    void *place = nullptr;
    if (m_method.returnMetaType().id() != QMetaType::Void) {
        result = QVariant(m_method.returnMetaType());
        place = result.data();
    }
    std::vector<void *> arguments{place};
    QVariantList values = m_arguments;
    for (QVariant &value : values)
        arguments.push_back(value.data());
    object->qt_metacall(QMetaObject::InvokeMetaMethod, m_method.methodIndex(), arguments.data());
    return result;
}

} // namespace oz::meta
