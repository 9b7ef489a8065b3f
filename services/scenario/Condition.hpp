#pragma once

#include "scenario/PublicValues.hpp"

#include <functional>
#include <memory>
#include <optional>

namespace oz::services {

/*!
 * A condition over values that have names: comparisons (== != < <= > >=, and "contains" for text and lists)
 * of names, numbers, words and 'text', put together with "and", "or", "not" and parentheses; a value that is
 * true or false is a condition by itself. What is not known equals "unknown" alone, and is neither smaller
 * nor larger than anything.
 */
class Condition
{
public:
    /*! A value that a name stands for. */
    struct Name
    {
        ValueType::Kind type;
        QStringList words; //!< that it can be, of a Word
        std::function<QVariant()> now;
    };
    /*! Finds what has a name; throws Error where nothing has it. Nothing is returned for what is no name. */
    using Names = std::function<std::optional<Name>(const QString &word)>;

    /*! Throws Error, which says what was expected, where \a text is none. */
    static Condition parse(const QString &text, const Names &names);
    /*! Names that are those of the public values, as \a tree has them. */
    static std::optional<Name> valueOfTree(const QString &word, const Tree &tree);

    /*! The fields of a \a request by their names, as they are in \a fields when they are asked for. */
    static Names fieldsOf(const AskedRequest &request, const std::shared_ptr<QVariantMap> &fields);
    /*! True if the fields of a \a request are as \a text says; throws as parse(). */
    static std::function<bool(const QVariantMap &fields)> overRequest(
        const QString &text, const AskedRequest &request);

    [[nodiscard]] bool holds() const { return m_holds(); }
    /*! The names in it with their values, for who wonders why it does not hold. */
    [[nodiscard]] QString valuesText() const;

private:
    class Parser;

    std::function<bool()> m_holds;
    QList<std::pair<QString, std::function<QVariant()>>> m_names;
};

} // namespace oz::services
