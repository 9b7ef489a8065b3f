#pragma once

#include <QMetaMethod>
#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <optional>

namespace oz::meta {

/*! A call of a slot or invokable method with arguments that were given as text. */
class MethodCall
{
public:
    /*!
     * The method \a name of \a type (or of its classes below QObject) that takes \a words as its arguments;
     * nothing where there is none, with \a problem saying what was expected, or left empty where no method
     * has that name.
     */
    static std::optional<MethodCall> find(
        const QMetaObject *type, const QString &name, const QStringList &words, QString *problem);

    /*! Calls it on \a object, and gives what it returns; an invalid QVariant where it returns nothing. */
    [[nodiscard]] QVariant invoke(QObject *object) const;

    /*! The names of the methods that can be called. */
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
