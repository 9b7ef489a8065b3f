#pragma once

#include "facility/Facility.hpp"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace oz::pages {

/*! An argument of a verb, for a call in a programming language. */
struct Parameter
{
    enum Type { Text, Texts, Whole, Number, NumberOrUnknown, Truth, Time };

    Type type = Text;
    QString name; //!< lower case, with hyphens
    bool isOptional = false;
    QStringList words = {}; //!< all that it can be, if it is one of a few
    QString note = {}; //!< its range or words
};

/*! The setting whose value the verb of the simulated \a part takes; null for any other verb. */
[[nodiscard]] const services::Setting *settingOf(const QString &part, const QString &verb);

/*! The parameters of a \a verb, as the daemon describes it, of the simulated \a part. */
[[nodiscard]] QList<Parameter> parametersOf(const QString &part, const QVariantMap &verb);

/*! \a text with a capital letter. */
[[nodiscard]] QString capitalised(const QString &text);

} // namespace oz::pages
