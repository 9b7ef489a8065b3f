#include <oz/models/CellularNetworkModel.hpp>

#include <oz/device/CellularNetworkInfo.hpp>

namespace oz::models {

using device::CellularNetworkInfo;
using device::CellularRadioInfo;

CellularNetworkModel::CellularNetworkModel(QObject *parent)
    : ObjectModel(CellularNetworkInfo::staticMetaObject, "index", "displayName", parent)
{
    connect(&m_radio, &CellularRadioInfo::networkCountChanged, this, &CellularNetworkModel::update);
    update();
}

CellularNetworkModel::~CellularNetworkModel() = default;

std::unique_ptr<QObject> CellularNetworkModel::makeObject(const QVariant &key)
{
    return std::make_unique<CellularNetworkInfo>(key.toInt());
}

void CellularNetworkModel::update()
{
    QVariantList indices;
    for (int index = 0; index < std::min(m_radio.networkCount(), 2); ++index)
        indices.append(index);
    setKeys(indices);
}

} // namespace oz::models
