#pragma once

#include <oz/device/MiracastManager.hpp>
#include <oz/models/RecordModel.hpp>

#include <QSet>

namespace oz::models {

/*!
 * The wireless displays that the last successful scan of this model's manager has found, and the one that is
 * connected. While a scan runs, those found before stay. Roles:
 * - hardwareAddress: the key;
 * - name: whatever text the sink chose;
 * - category, subCategory: a MiracastDeviceCategory and a MiracastDeviceSubCategory;
 * - connected: whether it is the one that is connected.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT MiracastSinkModel : public RecordModel
{
    Q_OBJECT
    /*! The object that looks for the sinks, for its other properties and its requests: requestScan() fills
     * the model. */
    Q_PROPERTY(oz::device::MiracastManager *manager READ manager CONSTANT FINAL)

public:
    /*! Belongs to \a parent. */
    explicit MiracastSinkModel(QObject *parent = nullptr);
    ~MiracastSinkModel() override;

    /*! The getter of the property. */
    [[nodiscard]] device::MiracastManager *manager() { return &m_manager; }

private:
    void found(const QString &name, const QString &address, device::MiracastDeviceCategory::Type category,
        device::MiracastDeviceSubCategory::Type subCategory);
    void scanned(device::MiracastResult::Type result);
    void update();

    device::MiracastManager m_manager;
    QList<Record> m_sinks; // but for whether one is connected
    QSet<QString> m_found; // by the scan that is running
};

} // namespace oz::models
