#pragma once

#include <QJsonValue>
#include <QMetaEnum>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <optional>

/*! Reads and writes values of properties and parameters as text: enumerators by name, maps as JSON. */
namespace oz::meta {

using namespace Qt::StringLiterals;

/*! The enumeration or flag set of \a type; an invalid one if it is neither. */
[[nodiscard]] QMetaEnum enumOf(QMetaType type);

/*! "oz::device::SdCardState::Type" as "SdCardState"; other types by their own name. */
[[nodiscard]] QString typeText(QMetaType type);

/*! The value in one line, with unprintable characters of text escaped as "\u202e". */
[[nodiscard]] QString valueText(const QVariant &value);

/*! The value as JSON: enumerators by name, or by number if they have none, and flag sets as a list of
 * names. */
[[nodiscard]] QJsonValue valueJson(const QVariant &value);

/*! Reads \a text as a value of \a type, and returns nothing if it is not one. Enumerators are given by
 * name or number, flags by names joined with "|", maps and lists as JSON. */
[[nodiscard]] std::optional<QVariant> parseValue(const QString &text, QMetaType type);

/*! Describes the texts that parseValue() accepts for \a type: "one of Mounted, Unmounted", "a whole
 * number". */
[[nodiscard]] QString expectation(QMetaType type);

} // namespace oz::meta
