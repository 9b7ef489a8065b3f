#include "FacilityValues.hpp"

#include "facilities/FacilityTable.hpp"
#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"

#include <utility>

using namespace oz;

FacilityValues::FacilityValues(QObject *parent) : QAbstractListModel(parent)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    connect(&m_soon, &QTimer::timeout, this, &FacilityValues::read);
}

FacilityValues::~FacilityValues() = default;

void FacilityValues::setFacility(const QString &facility)
{
    if (std::exchange(m_facility, facility) != facility)
        make();
}

void FacilityValues::setInstance(const QString &instance)
{
    if (std::exchange(m_instance, instance) != instance)
        make();
}

void FacilityValues::make()
{
    beginResetModel();
    m_rows.clear();
    m_tap.reset();
    m_object.reset();
    if (const tools::FacilityEntry *entry = tools::findFacility(m_facility)) {
        const QStringList instances = entry->instances ? entry->instances() : QStringList();
        m_object = entry->make(instances.contains(m_instance) ? m_instance : instances.value(0));
        // One change often emits several signals.
        m_tap = std::make_unique<meta::SignalTap>(
            m_object.get(), [this](const QMetaMethod &, const QVariantList &) { m_soon.start(); });
        for (const QMetaProperty &property : meta::propertiesOf(m_object->metaObject()))
            m_rows.emplace_back(QString::fromLatin1(property.name()), QString());
    }
    endResetModel();
    read();
    Q_EMIT facilityChanged();
}

void FacilityValues::read()
{
    if (!m_object)
        return;
    const tools::FacilityEntry *entry = tools::findFacility(m_facility);
    int row = 0;
    for (const QMetaProperty &property : meta::propertiesOf(m_object->metaObject())) {
        const QString name = m_rows[std::size_t(row)].first;
        QString text = meta::valueText(property.read(m_object.get()));
        const tools::Measure measure = entry->measures.value(name);
        if (!measure.unit.isEmpty() && text != measure.unknown)
            text += u' ' + measure.unit;
        if (std::exchange(m_rows[std::size_t(row)].second, text) != text)
            Q_EMIT dataChanged(index(row), index(row));
        ++row;
    }
}

int FacilityValues::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant FacilityValues::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Name && role != Value))
        return {};
    const auto &[name, value] = m_rows[std::size_t(index.row())];
    return role == Name ? name : value;
}

QHash<int, QByteArray> FacilityValues::roleNames() const
{
    return {{Name, "name"}, {Value, "value"}};
}
