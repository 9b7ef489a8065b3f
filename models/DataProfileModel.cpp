#include <oz/models/DataProfileModel.hpp>

#include "TreeNames.hpp"

#include <oz/device/CellularDataInterface.hpp>

namespace oz::models {

using device::CellularDataInterface;

DataProfileModel::DataProfileModel(QObject *parent)
    : ObjectModel(CellularDataInterface::staticMetaObject, "name", "name", parent),
      m_profiles(openNames(QStringLiteral("/pps/services/cds/cnice/status")))
{
    connect(m_profiles.get(), &PpsObject::readyRead, this, &DataProfileModel::update);
    update();
}

DataProfileModel::~DataProfileModel() = default;

std::unique_ptr<QObject> DataProfileModel::makeObject(const QVariant &key)
{
    return std::make_unique<CellularDataInterface>(key.toString());
}

void DataProfileModel::update()
{
    (void)m_profiles->read(); // from now on only a change emits readyRead()
    const QStringList names = CellularDataInterface().allNames();
    setKeys(QVariantList(names.begin(), names.end()));
}

} // namespace oz::models
