#pragma once

#include <oz/device/CellularRadioInfo.hpp>
#include <oz/models/ObjectModel.hpp>

namespace oz::models {

/*!
 * The networks that the radio uses, at most two: the primary one, and the CDMA 1X network beside it. The
 * roles are the properties of oz::device::CellularNetworkInfo, with its unknown values; the key is "index".
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT CellularNetworkModel : public ObjectModel
{
    Q_OBJECT

public:
    /*! Belongs to \a parent. */
    explicit CellularNetworkModel(QObject *parent = nullptr);
    ~CellularNetworkModel() override;

protected:
    /*! Implements ObjectModel. */
    std::unique_ptr<QObject> makeObject(const QVariant &key) override;

private:
    void update();
    device::CellularRadioInfo m_radio;
};

} // namespace oz::models
