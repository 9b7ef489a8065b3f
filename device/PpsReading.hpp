#pragma once

/*
 * How the classes open and read PPS objects: each class states its paths and the texts of its warnings.
 */

#include "Log.hpp"

#include <oz/PpsOpenMode.hpp>

#include <QString>
#include <QVariantMap>

#include <optional>

namespace oz {
class PpsObject;
}

namespace oz::device {

/*! A fixed warning about a PPS object, and what of the object's error follows it. */
struct LogText
{
    enum Detail {
        Nothing,
        ErrorCode, //!< the errno, then "."
        ErrorString,
        ErrorStringInBrackets, //!< the error string, then ")"; the text ends with the opening one
        ErrorStringJoined, //!< the same, all of it one string
    };

    const char *text;
    Detail detail = Nothing;

    void warn(const oz::PpsObject &pps) const;
};

/*! The warnings of one reading. */
struct ReadTexts
{
    LogText readFailed;
    LogText decodeFailed;
};

/*! Opens \a pps; on failure warns and returns false. */
bool openOrLog(oz::PpsObject *pps, oz::PpsOpenMode::Type mode, const LogText &openFailed);

/*! The next message of \a pps, decoded; nothing, after a warning, where reading or decoding fails. */
[[nodiscard]] std::optional<QVariantMap> readOrLog(oz::PpsObject *pps, const ReadTexts &texts);

/*! The attributes of the object \a key ("@status") in a decoded message; none where the key is missing. */
[[nodiscard]] QVariantMap attributesOf(const QVariantMap &message, const QString &key);

/*! The attributes of a decoded message's only object, whatever its name. */
[[nodiscard]] QVariantMap attributesOf(const QVariantMap &message);

/*!
 * The attributes of the only object in the next message of \a pps. None where \a pps is null or not open,
 * and, after a warning, where reading or decoding fails: so a class that takes none for its defaults falls
 * back to them.
 */
[[nodiscard]] QVariantMap attributesOrLog(oz::PpsObject *pps, const ReadTexts &texts);

/*! The member \a member of the attribute \a attribute, which is a map; invalid where either is missing. */
[[nodiscard]] QVariant memberOf(
    const QVariantMap &attributes, const QString &attribute, const QString &member);

/*! The attribute or member \a name as text; empty where it is missing. */
[[nodiscard]] QString textIn(const QVariantMap &map, const char *name);

} // namespace oz::device
