#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QStringList>

#include <vector>

/*! What a class declares below QObject, for people and as JSON. */
namespace oz::meta {

[[nodiscard]] std::vector<QMetaProperty> propertiesOf(const QMetaObject *type);
[[nodiscard]] std::vector<QMetaMethod> signalsOf(const QMetaObject *type);
/*! The public slots and invokable methods. */
[[nodiscard]] std::vector<QMetaMethod> methodsOf(const QMetaObject *type);

/*! The enumerators of \a type, as parseValue() takes them; none where it is no enumeration. */
[[nodiscard]] QStringList enumeratorsOf(QMetaType type);

/*! "requestConnect(QString name, WiFiDirectIntent intent)": types as people name them. */
[[nodiscard]] QString signatureText(const QMetaMethod &method);

/*! "constant", "writable" and "revision 1", as far as they are so. */
[[nodiscard]] QStringList traitsOf(const QMetaProperty &property);

[[nodiscard]] QJsonObject describe(const QMetaProperty &property);
[[nodiscard]] QJsonObject describe(const QMetaMethod &method);

} // namespace oz::meta
