#include <oz/models/DisplayModel.hpp>

#include "TreeNames.hpp"

#include <oz/DisplayTree.hpp>
#include <oz/device/DisplayInfo.hpp>

namespace oz::models {

using device::DisplayInfo;

DisplayModel::DisplayModel(QObject *parent)
    : ObjectModel(DisplayInfo::staticMetaObject, "displayId", "displayName", parent),
      m_displays(openNames(DisplayTree::PpsPath))
{
    connect(m_displays.get(), &PpsObject::readyRead, this, &DisplayModel::update);
    update();
}

DisplayModel::~DisplayModel() = default;

std::unique_ptr<QObject> DisplayModel::makeObject(const QVariant &key)
{
    return std::make_unique<DisplayInfo>(key.toInt());
}

void DisplayModel::update()
{
    const QVariantMap objects = PpsObject::decode(m_displays->read());
    QVariantList ids;
    for (const QVariant &attributes : objects) {
        for (const auto &display : DisplayTree::fromAttributes(attributes.toMap()))
            ids.append(display.first);
    }
    setKeys(ids);
}

} // namespace oz::models
