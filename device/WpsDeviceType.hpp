#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace oz::device {

/*!
 * The primary device type of Wi-Fi Protected Setup in its text form, such as "7-0050F204-1": the category,
 * the identifier of the organisation that defines the sub-categories, and the sub-category.
 */
struct WpsDeviceType
{
    std::optional<int> category; //!< where the first piece is a decimal number, whatever follows it
    std::optional<int> subCategory; //!< where the third piece is one, whatever follows it
    qsizetype pieces = 0; //!< three in a text of that form

    static WpsDeviceType parse(const QString &text)
    {
        const QStringList pieces = text.split(u'-');
        const auto numberIn = [&pieces](qsizetype piece) {
            bool ok = false;
            const int number = pieces.value(piece).toInt(&ok);
            return ok ? std::optional(number) : std::nullopt;
        };
        return {numberIn(0), numberIn(2), pieces.size()};
    }
};

/*! The category with the number \a id in \a Holder, an enumeration that has the categories of 1 to 11 by
 * their numbers. */
template <typename Holder>
[[nodiscard]] typename Holder::Type wpsCategory(int id)
{
    constexpr int First = 1;
    constexpr int Last = 11;
    constexpr int OtherCategory = 255;
    if (id == OtherCategory)
        return Holder::Other;
    return id >= First && id <= Last ? typename Holder::Type(id) : Holder::Unknown;
}

} // namespace oz::device
