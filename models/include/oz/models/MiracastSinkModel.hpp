#pragma once

#include <oz/device/MiracastManager.hpp>
#include <oz/models/RecordModel.hpp>

#include <QSet>

namespace oz::models {

/*!
 * The wireless displays that the last successful scan of this model's manager found, and the connected one.
 * During a scan, the results of the last one stay. Roles:
 * - hardwareAddress: the key;
 * - name: a text that the sink chose;
 * - category, subCategory: a MiracastDeviceCategory and a MiracastDeviceSubCategory;
 * - connected: whether it is connected.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT MiracastSinkModel : public RecordModel
{
    Q_OBJECT
    /*! The object that finds the sinks, with further properties and requests: requestScan() fills the model.
     */
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
    QList<Record> m_sinks; // without "connected"
    QSet<QString> m_found; // by the present scan
};

} // namespace oz::models
