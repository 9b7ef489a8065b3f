#include "TreeNames.hpp"

#include <QLoggingCategory>

namespace oz::models {

namespace {
Q_LOGGING_CATEGORY(logModels, "oz.models")
}

std::unique_ptr<PpsObject> openNames(const QString &path)
{
    auto object = std::make_unique<PpsObject>(path);
    if (!object->open(PpsOpenMode::Subscribe))
        qCWarning(logModels).noquote() << path << "cannot be opened:" << object->errorString();
    return object;
}

} // namespace oz::models
