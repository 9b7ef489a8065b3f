#include "SignalLog.hpp"

#include "facilities/FacilityTable.hpp"
#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"

#include <QTime>

using namespace oz;

namespace {

// "level" for levelChanged(): most signals tell a new value.
QString changeOf(const QMetaMethod &signal)
{
    const QString name = QString::fromLatin1(signal.name());
    const QLatin1String changed("Changed");
    return name.endsWith(changed) ? name.chopped(changed.size()) : name;
}

} // namespace

SignalLog::SignalLog(QObject *parent) : QAbstractListModel(parent)
{
    for (const tools::FacilityEntry &entry : tools::facilityTable()) {
        const QStringList selected = entry.instances ? entry.instances() : QStringList{QString()};
        for (const QString &instance : selected) {
            m_facilities.push_back(entry.make(instance));
            m_taps.push_back(std::make_unique<meta::SignalTap>(m_facilities.back().get(),
                [this, title = entry.title(instance)](
                    const QMetaMethod &signal, const QVariantList &arguments) {
                    if (meta::isNumericTwin(signal))
                        return;
                    QStringList texts;
                    for (const QVariant &argument : arguments)
                        texts.append(meta::valueText(argument));
                    append(title + u' ' + changeOf(signal), texts.join(QLatin1String(", ")));
                }));
        }
    }
}

SignalLog::~SignalLog() = default;

void SignalLog::append(const QString &what, const QString &values)
{
    constexpr std::size_t most = 1000;
    if (m_rows.size() == most) {
        beginRemoveRows({}, 0, 0);
        m_rows.pop_front();
        endRemoveRows();
    }
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_rows.push_back({QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz")), what, values});
    endInsertRows();
}

int SignalLog::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant SignalLog::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Row &row = m_rows[std::size_t(index.row())];
    switch (role) {
    case Time:
        return row.time;
    case What:
        return row.what;
    case Values:
        return row.values;
    default:
        return {};
    }
}

QHash<int, QByteArray> SignalLog::roleNames() const
{
    return {{Time, "time"}, {What, "what"}, {Values, "values"}};
}
