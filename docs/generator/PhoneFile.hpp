#pragma once

#include <QString>

namespace oz::pages {

/*!
 * The shipped phone's file \a name, whose content is \a text, with each section's settings as the facility's
 * table has them: in its order, with their initial values and their help. What a person wrote stays: the
 * comments before the sections, keys that no table has, and the values of instances. In those the first use
 * of a key says what it is. Throws Error where the file is not laid out as expected, or where it is no phone.
 */
[[nodiscard]] QString withSettings(const QString &text, const QString &name);

} // namespace oz::pages
