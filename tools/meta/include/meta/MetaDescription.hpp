#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QStringList>

#include <vector>

/*! Describes what a class declares below QObject, as text and as JSON. */
namespace oz::meta {

[[nodiscard]] std::vector<QMetaProperty> propertiesOf(const QMetaObject *type);
[[nodiscard]] std::vector<QMetaMethod> signalsOf(const QMetaObject *type);
/*! The public slots and invokable methods. */
[[nodiscard]] std::vector<QMetaMethod> methodsOf(const QMetaObject *type);

/*! Returns whether \a signal repeats another signal that carries enumerators, with numbers in their place. */
[[nodiscard]] bool isNumericTwin(const QMetaMethod &signal);

/*! The enumerators of \a type, as parseValue() accepts them; none if it is not an enumeration. */
[[nodiscard]] QStringList enumeratorsOf(QMetaType type);

/*! "requestConnect(QString name, WiFiDirectIntent intent)", with short names of types. */
[[nodiscard]] QString signatureText(const QMetaMethod &method);

/*! Those of "constant", "writable" and "revision 1" that apply. */
[[nodiscard]] QStringList traitsOf(const QMetaProperty &property);

[[nodiscard]] QJsonObject describe(const QMetaProperty &property);
[[nodiscard]] QJsonObject describe(const QMetaMethod &method);

} // namespace oz::meta
