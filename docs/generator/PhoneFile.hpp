#pragma once

#include <QString>

namespace oz::pages {

/*!
 * The shipped phone's file \a name, whose content is \a text, with each section's settings as the facility's
 * table has them: in its order, with their initial values and their help. It keeps what is written by hand:
 * the comments before the sections, keys that no table has, and the values of instances. Among those, the
 * first use of a key has its help. Throws Error if the file is not laid out as expected, or is not a valid
 * phone.
 */
[[nodiscard]] QString withSettings(const QString &text, const QString &name);

} // namespace oz::pages
