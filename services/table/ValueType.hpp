#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace oz::services {

/*!
 * The type of a value, with its range. A phone's file, an order, a condition, the state that is saved and a
 * control that shows it all go by this. A value is a bool, a number, a QString or a QStringList; one that is
 * not known is invalid.
 */
struct ValueType
{
    enum Kind { Number, Truth, Word, Text, List };

    Kind kind = Text;
    QString unit = {};
    QStringList words = {}; //!< of a Word, and of what a List holds; one that is empty can hold anything

    //! Of a Number; without limits where the least is not below the most.
    bool isWhole = false;
    double least = 0;
    double most = 0;
    //! What a control offers of it, where that is less than all.
    struct Offer
    {
        double least;
        double most;
        double step;
    };
    std::optional<Offer> offer = {};
    //! Of a Text: a regular expression that it matches as a whole, and what that is, for a person.
    QString form = {};
    QString formText = {};

    bool mayBeUnknown = false; //!< null in a file, and "unknown" in an order
    bool isPrivate = false; //!< no error shows it

    /*! A short description of the type, for a list. */
    [[nodiscard]] QString text() const;
    /*! The words of an error about a value that does not fit, in a file or an order's argument: "a whole
     * number from 0 to 100". */
    [[nodiscard]] QString expected() const;
    [[nodiscard]] QString expectedArgument() const;

    /*! The value that \a value is, as JSON has it; nothing where it is none. */
    [[nodiscard]] std::optional<QVariant> accept(const QVariant &value) const;
    /*! The value that the argument of an order says; nothing where it says none. */
    [[nodiscard]] std::optional<QVariant> fromArgument(const QString &argument) const;
    /*! The argument that says \a value. */
    [[nodiscard]] QString toArgument(const QVariant &value) const;

private:
    [[nodiscard]] QString expectedKnown() const;
};

} // namespace oz::services
