#pragma once

#include <QJsonValue>
#include <QMetaEnum>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <optional>

/*! Values of properties and parameters as people write and read them: enumerators by name, maps as JSON. */
namespace oz::meta {

using namespace Qt::StringLiterals;

/*! The enumeration (or flag set) that \a type is; an invalid one where it is none. */
[[nodiscard]] QMetaEnum enumOf(QMetaType type);

/*! "oz::device::SdCardState::Type" as "SdCardState"; other types by their own name. */
[[nodiscard]] QString typeText(QMetaType type);

/*! The value in one line; in text, what would not show as itself is written as "\u202e". */
[[nodiscard]] QString valueText(const QVariant &value);

/*! The value as JSON: enumerators by name (numbers where they have none), flag sets as a list of names. */
[[nodiscard]] QJsonValue valueJson(const QVariant &value);

/*!
 * \a text as a value of \a type; nothing where it is none. Enumerators go by name or number, flags by names
 * joined with "|", maps and lists as JSON.
 */
[[nodiscard]] std::optional<QVariant> parseValue(const QString &text, QMetaType type);

/*! What parseValue() takes for \a type, for messages: "one of Mounted, Unmounted", "a whole number". */
[[nodiscard]] QString expectation(QMetaType type);

} // namespace oz::meta
