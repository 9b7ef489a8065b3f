#pragma once

#include <oz/Limits.hpp>
#include <oz/OzSupportGlobal.hpp>

#include <QByteArray>
#include <QString>
#include <QVariantMap>

/*!
 * The text form of a PPS message: UTF-8, lines that end in LF, an optional first line "@name" that heads the
 * attributes of the object `name`, then one line an attribute:
 *
 *     name::text             text as it stands, to the end of the line
 *     name:c:text            text with the escapes \n \t \r \\ \" \xHH
 *     name:n:123             a number: int where it fits 32 bits, else 64 bits, else double
 *     name:b:true            true or false
 *     name:json:{"a":[1,2]}  a map, a list, or any other JSON value
 *     name:b64:AAEC          bytes
 *     -name                  the attribute is gone (in a delta), or shall go (in a request)
 *
 * All functions may be called from any thread.
 */
namespace oz::PpsText {

inline constexpr qsizetype MaxMessageSize = oz::MaxMessageSize; //!< bytes; a longer one is refused
inline constexpr int MaxDepth = 64; //!< maps and lists in one another; a deeper value is refused

/*!
 * The map of \a data: one key, "@" and the object's name ("@" alone without a header line), whose value is
 * the map from attribute name to value. An attribute that is gone has an invalid QVariant; where a name
 * occurs twice, the last line counts.
 *
 * A malformed message gives an empty map, and \a error, where given, says what is wrong and in which line;
 * otherwise \a error is cleared. Malformed is a line without two colons, an unknown qualifier, a value that
 * does not fit its qualifier, broken UTF-8, a header that is not the first line, a number out of the range of
 * double, more than MaxDepth levels, more than MaxMessageSize bytes.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT QVariantMap decode(const QByteArray &data, QString *error = nullptr);

/*!
 * The attributes as text without a header line, each in the shortest form that holds it, in the map's order.
 *
 * Text, integers up to 64 bits, float and double, bool, QByteArray, QVariantList (and QStringList, which
 * decodes as a QVariantList), QVariantMap, nullptr (JSON's null) and the invalid QVariant ("-name") have a
 * form. Refused, with an empty result and \a error naming the attribute: a name that is empty, holds ':' or
 * LF, or begins with '@' or '-'; a value of any other type; a number that is not finite; bytes inside a list
 * or a map; text that is no valid UTF-16; more than MaxDepth levels; more than MaxMessageSize bytes in all.
 * Every text that is not refused decodes to an equal map.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT QByteArray encode(const QVariantMap &attributes, QString *error = nullptr);

/*! As above, under the header line of the object \a objectName (not empty, without LF). */
[[nodiscard]] OZ_SUPPORT_EXPORT QByteArray encodeObject(
    const QString &objectName, const QVariantMap &attributes, QString *error = nullptr);

} // namespace oz::PpsText
