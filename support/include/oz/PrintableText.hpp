#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QString>

namespace oz {

/*!
 * \a text as it can be shown on a terminal or in a log, where text may come from strangers, such as the name
 * of a peer: what does not show, but moves the cursor, begins a line or turns the direction of writing, is
 * written as in JSON ("\\u202e"). Any thread may call it.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT QString printableText(const QString &text);

} // namespace oz
