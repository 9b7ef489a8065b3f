#include <oz/models/RecordModel.hpp>

#include <QSet>

namespace oz::models {

namespace {

// Enumerators as numbers, so that scripts can read them and equal values compare as equal.
QVariantList plain(QVariantList record)
{
    for (QVariant &value : record) {
        if (value.metaType().flags() & QMetaType::IsEnumeration)
            value = value.toInt();
    }
    return record;
}

} // namespace

RecordModel::RecordModel(QByteArrayList roles, const QByteArray &text, QObject *parent)
    : QAbstractListModel(parent), m_roles(std::move(roles)), m_text(int(m_roles.indexOf(text)))
{
    Q_ASSERT(m_text >= 0);
}

RecordModel::~RecordModel() = default;

int RecordModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant RecordModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Record &record = m_records.at(index.row());
    if (role == Qt::DisplayRole)
        return record.at(m_text);
    return record.value(role - Qt::UserRole);
}

QHash<int, QByteArray> RecordModel::roleNames() const
{
    QHash<int, QByteArray> names;
    for (int i = 0; i < m_roles.size(); ++i)
        names.insert(Qt::UserRole + i, m_roles.at(i));
    return names;
}

int RecordModel::rowOf(const QVariant &key) const
{
    for (int row = 0; row < count(); ++row) {
        if (m_records.at(row).constFirst() == key)
            return row;
    }
    return -1;
}

QVariantMap RecordModel::record(int row) const
{
    QVariantMap values;
    if (row < 0 || row >= count())
        return values;
    for (int i = 0; i < m_roles.size(); ++i)
        values.insert(QString::fromLatin1(m_roles.at(i)), m_records.at(row).at(i));
    return values;
}

void RecordModel::setRecords(const QList<Record> &records)
{
    QSet<QString> keys;
    for (const Record &record : records)
        keys.insert(record.constFirst().toString());
    for (int row = count() - 1; row >= 0; --row) {
        if (keys.contains(m_records.at(row).constFirst().toString()))
            continue;
        beginRemoveRows({}, row, row);
        m_records.removeAt(row);
        endRemoveRows();
        Q_EMIT countChanged(count());
    }
    int place = 0;
    for (const Record &record : records) {
        const int row = rowOf(record.constFirst());
        if (row >= 0 && row < place)
            continue; // a second record with this key
        if (row < 0) {
            insertRow(place, record);
        } else if (row != place) {
            beginMoveRows({}, row, row, {}, place);
            m_records.move(row, place);
            endMoveRows();
        }
        changeRow(place, record);
        ++place;
    }
}

void RecordModel::setRecord(const Record &record)
{
    const int row = rowOf(record.constFirst());
    if (row < 0)
        insertRow(count(), record);
    else
        changeRow(row, record);
}

void RecordModel::changeRow(int row, const Record &record)
{
    Q_ASSERT(record.size() == m_roles.size());
    const Record values = plain(record);
    QList<int> changed;
    for (int i = 0; i < m_roles.size(); ++i) {
        if (values.at(i) != m_records.at(row).at(i))
            changed.append(Qt::UserRole + i);
    }
    if (changed.isEmpty())
        return;
    if (changed.contains(Qt::UserRole + m_text))
        changed.append(Qt::DisplayRole);
    m_records[row] = values;
    Q_EMIT dataChanged(index(row), index(row), changed);
}

void RecordModel::insertRow(int row, const Record &record)
{
    Q_ASSERT(record.size() == m_roles.size());
    beginInsertRows({}, row, row);
    m_records.insert(row, plain(record));
    endInsertRows();
    Q_EMIT countChanged(count());
}

} // namespace oz::models
