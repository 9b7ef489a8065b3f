#include <oz/models/MiracastSinkModel.hpp>

#include <algorithm>

namespace oz::models {

using device::MiracastConnectionState;
using device::MiracastDeviceCategory;
using device::MiracastDeviceSubCategory;
using device::MiracastManager;
using device::MiracastResult;

MiracastSinkModel::MiracastSinkModel(QObject *parent)
    : RecordModel({"hardwareAddress", "name", "category", "subCategory", "connected"}, "name", parent)
{
    using Found = void (MiracastManager::*)(
        QString, QString, MiracastDeviceCategory::Type, MiracastDeviceSubCategory::Type);
    connect(
        &m_manager, static_cast<Found>(&MiracastManager::deviceDiscovered), this, &MiracastSinkModel::found);
    connect(
        &m_manager, static_cast<Found>(&MiracastManager::deviceConnected), this, &MiracastSinkModel::found);
    connect(&m_manager, qOverload<MiracastResult::Type>(&MiracastManager::scanCompleted), this,
        &MiracastSinkModel::scanned);
    connect(&m_manager, qOverload<MiracastConnectionState::Type>(&MiracastManager::connectionStateChanged),
        this, &MiracastSinkModel::update);
    connect(&m_manager, &MiracastManager::hardwareAddressChanged, this, &MiracastSinkModel::update);
    if (m_manager.connectionState() == MiracastConnectionState::Connected) {
        found(m_manager.deviceName(), m_manager.hardwareAddress(), m_manager.deviceCategory(),
            m_manager.deviceSubCategory());
    }
}

MiracastSinkModel::~MiracastSinkModel() = default;

void MiracastSinkModel::found(const QString &name, const QString &address,
    MiracastDeviceCategory::Type category, MiracastDeviceSubCategory::Type subCategory)
{
    m_found.insert(address);
    const Record sink{address, name, category, subCategory, false};
    const auto known = std::find_if(
        m_sinks.begin(), m_sinks.end(), [&](const Record &each) { return each.constFirst() == address; });
    if (known == m_sinks.end())
        m_sinks.append(sink);
    else
        *known = sink;
    update();
}

void MiracastSinkModel::scanned(MiracastResult::Type result)
{
    if (result == MiracastResult::Success) {
        m_sinks.removeIf([this](const Record &sink) {
            const QString address = sink.constFirst().toString();
            return !m_found.contains(address) && address != m_manager.hardwareAddress();
        });
        update();
    }
    m_found.clear();
}

void MiracastSinkModel::update()
{
    QList<Record> sinks = m_sinks;
    for (Record &sink : sinks) {
        sink.last() = m_manager.connectionState() == MiracastConnectionState::Connected
            && sink.constFirst() == m_manager.hardwareAddress();
    }
    setRecords(sinks);
}

} // namespace oz::models
