#pragma once

#include <oz/models/ObjectModel.hpp>

namespace oz {
class PpsObject;
}

namespace oz::models {

/*!
 * The displays, attached or not, in the order of their identifiers. The roles are the properties of
 * oz::device::DisplayInfo, with its unknown values; the key is "displayId".
 *
 * If the displays' object cannot be opened at construction, the model stays empty for its life.
 *
 * Create and use an instance on one thread, which must have an event loop.
 */
class OZ_MODELS_EXPORT DisplayModel : public ObjectModel
{
    Q_OBJECT

public:
    /*! Belongs to \a parent. */
    explicit DisplayModel(QObject *parent = nullptr);
    ~DisplayModel() override;

protected:
    /*! Implements ObjectModel. */
    std::unique_ptr<QObject> makeObject(const QVariant &key) override;

private:
    void update();
    std::unique_ptr<PpsObject> m_displays;
};

} // namespace oz::models
