#pragma once

#include <oz/PpsObject.hpp>

#include <memory>

namespace oz::models {

/*! An object of the tree whose attributes are the records that a model is to list, open where it can be. */
[[nodiscard]] std::unique_ptr<PpsObject> openNames(const QString &path);

} // namespace oz::models
