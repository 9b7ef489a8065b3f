#pragma once

#include <oz/models/OzModelsGlobal.hpp>

#include <QAbstractListModel>
#include <QByteArrayList>
#include <QVariantList>
#include <QVariantMap>

namespace oz::models {

/*!
 * A list of records, each with a unique key. The model signals changes row by row and role by role: it
 * inserts, removes, moves and changes rows, and is never reset. Enumerators are numbers.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT RecordModel : public QAbstractListModel
{
    Q_OBJECT
    /*! The number of rows. */
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)

public:
    ~RecordModel() override;

    /*! The getter of the property. */
    [[nodiscard]] int count() const { return int(m_records.size()); }
    /*! The count; a row has no rows. */
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    /*! The value of a role of roleNames(), or of Qt::DisplayRole: the text that users know the record by. */
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /*! The roles from Qt::UserRole on, by their names in QML; the key is the first. */
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /*! The row of the record with this key; -1 without one. */
    [[nodiscard]] Q_INVOKABLE int rowOf(const QVariant &key) const;
    /*! The values of a row by their roles' names; empty for any other row. */
    [[nodiscard]] Q_INVOKABLE QVariantMap record(int row) const;

Q_SIGNALS:
    /*! The property of this name has changed. */
    void countChanged(int count);

protected:
    /*! A value for each role, in the order of the roles. */
    using Record = QVariantList;

    /*! The first role is the key; \a text is the role that users know a record by. */
    RecordModel(QByteArrayList roles, const QByteArray &text, QObject *parent);
    /*! Changes the list to these records in this order. The first of several with the same key counts. */
    void setRecords(const QList<Record> &records);
    /*! Changes the record with the same key, or appends a new one. */
    void setRecord(const Record &record);

private:
    void changeRow(int row, const Record &record);
    void insertRow(int row, const Record &record);

    QByteArrayList m_roles;
    int m_text;
    QList<Record> m_records;
};

} // namespace oz::models
