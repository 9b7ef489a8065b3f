#pragma once

#include <QMetaEnum>
#include <QObject>

#include <QtQml/qqml.h>

namespace oz::qml {

/*! The base of QML's holders of enumerations. */
class EnumHolder : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    QML_ADDED_IN_VERSION(1, 0)

public:
    /*!
     * The name of an enumerator, such as "Red"; for a set of flags the names, separated by "|". Empty for any
     * other value, such as a set with an unnamed flag, a fraction, or undefined.
     */
    Q_INVOKABLE [[nodiscard]] QString keyOf(double value) const;

protected:
    /*! For the enumeration in \a holder, or for its flags if it declares them. */
    explicit EnumHolder(const QMetaObject &holder, QObject *parent);

private:
    QMetaEnum m_enumeration;
};

} // namespace oz::qml
