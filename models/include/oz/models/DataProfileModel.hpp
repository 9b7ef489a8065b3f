#pragma once

#include <oz/models/ObjectModel.hpp>

namespace oz {
class PpsObject;
}

namespace oz::models {

/*!
 * The cellular data profiles, sorted by name. The roles are the properties of
 * oz::device::CellularDataInterface, with its unknown values; the key is "name".
 *
 * If the profiles' object cannot be opened at construction, the model stays empty for its life.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT DataProfileModel : public ObjectModel
{
    Q_OBJECT

public:
    /*! Belongs to \a parent. */
    explicit DataProfileModel(QObject *parent = nullptr);
    ~DataProfileModel() override;

protected:
    /*! Implements ObjectModel. */
    std::unique_ptr<QObject> makeObject(const QVariant &key) override;

private:
    void update();
    std::unique_ptr<PpsObject> m_profiles;
};

} // namespace oz::models
