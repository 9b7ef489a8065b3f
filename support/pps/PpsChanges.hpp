#pragma once

#include "pps/PpsLines.hpp"

namespace oz {

/*!
 * True if two objects are the same to their readers: they have the same name, and for each attribute an equal
 * value of the same type, in any text form and order of lines. A line that does not decode equals its own
 * text only.
 */
[[nodiscard]] bool sameAttributes(const QByteArray &one, const QByteArray &other);

/*! The header of \a after and those lines of it whose values \a before does not hold, with "-name" for what
 * is gone. */
[[nodiscard]] QByteArray deltaLines(const QByteArray &before, const QByteArray &after);

/*! The fate of the attributes that a publish does not name. */
enum class PpsMerge { Keep, Drop };

/*!
 * The object \a name after \a update is published onto \a content: its attributes keep their order, and their
 * text where the value is equal; new ones come last, "-name" in \a update takes one away. Malformed lines of
 * \a content, which no name can reach, are dropped.
 */
[[nodiscard]] QByteArray mergeLines(
    const QByteArray &content, const QByteArray &update, QByteArrayView name, PpsMerge merge);

} // namespace oz
