#include <oz/models/ObjectModel.hpp>

#include <QMetaMethod>
#include <QMetaProperty>

namespace oz::models {

namespace {

QByteArrayList propertiesOf(const QMetaObject &type, const QByteArray &first)
{
    QByteArrayList names{first};
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        const QByteArray name = type.property(i).name();
        if (name != first)
            names.append(name);
    }
    return names;
}

} // namespace

ObjectModel::ObjectModel(
    const QMetaObject &type, const QByteArray &key, const QByteArray &text, QObject *parent)
    : RecordModel(propertiesOf(type, key), text, parent), m_properties(propertiesOf(type, key))
{
}

ObjectModel::~ObjectModel() = default;

void ObjectModel::setKeys(const QVariantList &keys)
{
    static const QMetaMethod slot = staticMetaObject.method(staticMetaObject.indexOfSlot("refresh()"));
    std::map<QString, std::unique_ptr<QObject>> before;
    before.swap(m_objects);
    QList<Record> records;
    for (const QVariant &key : keys) {
        std::unique_ptr<QObject> &object = m_objects[key.toString()];
        if (object)
            continue;
        if (const auto known = before.find(key.toString()); known != before.end()) {
            object = std::move(known->second);
        } else {
            object = makeObject(key);
            for (const QByteArray &name : m_properties) {
                const QMetaObject &type = *object->metaObject();
                const QMetaProperty property = type.property(type.indexOfProperty(name));
                if (property.hasNotifySignal())
                    connect(object.get(), property.notifySignal(), this, slot, Qt::UniqueConnection);
            }
        }
        records.append(read(*object));
    }
    setRecords(records);
    for (auto &gone : before) {
        if (gone.second)
            gone.second.release()->deleteLater(); // its signal may be the caller
    }
}

void ObjectModel::refresh()
{
    // Ignores objects that wait for their deletion.
    for (const auto &known : m_objects) {
        if (known.second.get() == sender())
            setRecord(read(*known.second));
    }
}

RecordModel::Record ObjectModel::read(const QObject &object) const
{
    Record record;
    for (const QByteArray &name : m_properties)
        record.append(object.property(name));
    return record;
}

} // namespace oz::models
