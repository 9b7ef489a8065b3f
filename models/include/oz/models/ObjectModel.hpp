#pragma once

#include <oz/models/RecordModel.hpp>

#include <map>
#include <memory>

namespace oz::models {

/*!
 * A list of objects of one class, one per row. The roles are the class's properties; the model follows them.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT ObjectModel : public RecordModel
{
    Q_OBJECT

public:
    ~ObjectModel() override;

protected:
    /*! \a key is the property that identifies an object, \a text the one that users know it by. */
    ObjectModel(const QMetaObject &type, const QByteArray &key, const QByteArray &text, QObject *parent);
    /*! Makes the list have an object for each of these keys, in this order. */
    void setKeys(const QVariantList &keys);
    /*! Creates the object for a new key. */
    [[nodiscard]] virtual std::unique_ptr<QObject> makeObject(const QVariant &key) = 0;
    /*! Calls \a visit with each object. */
    template <typename Visit>
    void forEachObject(const Visit &visit) const
    {
        for (const auto &object : m_objects)
            visit(object.second.get());
    }

private Q_SLOTS:
    /*! Reads the sender's properties. */
    void refresh();

private:
    [[nodiscard]] Record read(const QObject &object) const;

    QByteArrayList m_properties;
    std::map<QString, std::unique_ptr<QObject>> m_objects;
};

} // namespace oz::models
