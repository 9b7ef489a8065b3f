#pragma once

#include <oz/PpsObject.hpp>

#include <memory>

namespace oz::models {

/*! Opens the object of the tree whose attributes are the records of a model; it stays closed if that fails.
 */
[[nodiscard]] std::unique_ptr<PpsObject> openNames(const QString &path);

} // namespace oz::models
