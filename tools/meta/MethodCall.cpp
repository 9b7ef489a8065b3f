#include "meta/MethodCall.hpp"

#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"

#include <array>
#include <vector>

namespace oz::meta {

QStringList MethodCall::namesOf(const QMetaObject *type)
{
    QStringList names;
    for (const QMetaMethod &method : methodsOf(type)) {
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
    for (const QMetaMethod &method : methodsOf(type)) {
        if (name != QLatin1String(method.name()))
            continue;
        signatures.append(signatureText(method));
        if (method.parameterCount() != words.size())
            continue;
        QVariantList arguments;
        for (int i = 0; i < method.parameterCount(); ++i) {
            const auto value = parseValue(words[i], method.parameterMetaType(i));
            if (!value) {
                mismatch = "argument "_L1 + QString::number(i + 1) + " of "_L1 + name + " is "_L1
                    + expectation(method.parameterMetaType(i)) + ", not '"_L1 + words[i] + u'\'';
                break;
            }
            arguments.append(*value);
        }
        if (arguments.size() == words.size())
            return MethodCall(method, arguments);
    }
    if (!mismatch.isEmpty()) {
        *problem = mismatch;
    } else if (!signatures.isEmpty()) {
        *problem = signatures.join(" or "_L1) + " does not take "_L1 + QString::number(words.size())
            + " arguments"_L1;
    }
    return std::nullopt;
}

QVariant MethodCall::invoke(QObject *object) const
{
    // Does what QMetaMethod::invoke() does, with types that are known only at run time.
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
