#pragma once

#include <QMetaMethod>
#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <optional>

namespace oz::meta {

/*! A call of a slot or invokable method with arguments given as text. */
class MethodCall
{
public:
    /*!
     * Finds the method \a name of \a type, or of its base classes below QObject, that accepts \a words as
     * arguments. If there is none, returns nothing, and \a problem says what was expected; it is empty if no
     * method has that name.
     */
    static std::optional<MethodCall> find(
        const QMetaObject *type, const QString &name, const QStringList &words, QString *problem);

    /*! Calls the method on \a object and returns its result; an invalid QVariant for void. */
    [[nodiscard]] QVariant invoke(QObject *object) const;

    /*! The names of the methods of \a type that can be called. */
    [[nodiscard]] static QStringList namesOf(const QMetaObject *type);

private:
    MethodCall(const QMetaMethod &method, const QVariantList &arguments)
        : m_method(method), m_arguments(arguments)
    {
    }

    QMetaMethod m_method;
    QVariantList m_arguments;
};

} // namespace oz::meta
