#include "PhoneControl.hpp"

#include <oz/client/DaemonObjects.hpp>

#include <utility>

using oz::client::DaemonError;
namespace DaemonObjects = oz::client::DaemonObjects;

namespace {

const QString Name = QStringLiteral("name");
const QString Source = QStringLiteral("source");

} // namespace

PhoneControl::PhoneControl(QObject *parent)
    : QObject(parent), m_phone(DaemonObjects::Phone, [this](const QVariantMap &told) { updatePhone(told); }),
      m_statusObject(DaemonObjects::Status,
          [this](const QVariantMap &status) {
              m_status = status.value(QStringLiteral("facilities")).toMap();
              updateFacilities();
          }),
      m_vibration(QStringLiteral("/pps/services/vibration/activity"), [this](const QVariantMap &activity) {
          m_vibrating = activity.value(QStringLiteral("running")).toBool();
          Q_EMIT vibratingChanged();
      })
{
}

void PhoneControl::updatePhone(const QVariantMap &told)
{
    if (told.isEmpty())
        return; // the daemon has ended, and may restart
    const QString mark = told.value(QStringLiteral("description")).toString();
    if (std::exchange(m_description, mark) != mark)
        describe();
    const auto take = [&]<typename Value>(Value *value, const char *name, void (PhoneControl::*signal)()) {
        const auto next = told.value(QLatin1String(name)).template value<Value>();
        if (std::exchange(*value, next) != next)
            Q_EMIT(this->*signal)();
    };
    take(&m_values, "values", &PhoneControl::valuesChanged);
    take(&m_neighbours, "neighbours", &PhoneControl::neighboursChanged);
}

void PhoneControl::describe()
{
    m_daemon.askLater(QStringLiteral("describe"), {}, this,
        [this](const QVariant &told, const std::optional<DaemonError> &error) {
            if (error)
                return m_description.clear(); // ask again with the next change
            m_parts = told.toMap().value(QStringLiteral("simulated")).toMap();
            updateFacilities();
        });
}

void PhoneControl::updateFacilities()
{
    // The parts include some that are no facility, such as the clock.
    QVariantMap all = m_parts;
    for (auto state = m_status.begin(); state != m_status.end(); ++state) {
        QVariantMap facility = state->toMap();
        if (facility.value(Source) == QStringLiteral("simulated"))
            facility.insert(m_parts.value(state.key()).toMap());
        all.insert(state.key(), facility);
    }
    QVariantList facilities;
    for (auto each = all.begin(); each != all.end(); ++each) {
        QVariantMap facility = each->toMap();
        facility.insert(Name, each.key());
        facilities.append(facility);
    }
    if (facilities != m_facilities) {
        m_facilities = facilities;
        Q_EMIT changed();
        Q_EMIT neighboursChanged(); // for their facilities' titles
    }
}

QVariantList PhoneControl::neighbours() const
{
    QVariantList neighbours;
    for (const QVariant &each : m_neighbours) {
        QVariantMap neighbour = each.toMap();
        const QVariantMap facility =
            m_status.value(neighbour.value(QStringLiteral("part")).toString()).toMap();
        neighbour.insert(QStringLiteral("facility"), facility.value(QStringLiteral("title")));
        neighbours.append(neighbour);
    }
    return neighbours;
}

int PhoneControl::tell(const QStringList &words)
{
    const QString order = words.join(u' ');
    const int number = ++m_orders;
    m_daemon.askLater(QStringLiteral("sim"),
        QVariantMap{{QStringLiteral("facility"), words.value(0)}, {QStringLiteral("verb"), words.value(1)},
            {QStringLiteral("arguments"), words.mid(2)}, {QStringLiteral("publish"), true}},
        this, [this, order, number](const QVariant &, const std::optional<DaemonError> &error) {
            m_phone.read();
            Q_EMIT answered(order, error ? error->text() : QString(), number);
        });
    return number;
}

int PhoneControl::bring(const QVariantMap &neighbour, bool inRange)
{
    const QString part = neighbour.value(QStringLiteral("part")).toString();
    const QString verb = m_parts.value(part)
                             .toMap()
                             .value(inRange ? QStringLiteral("comes") : QStringLiteral("goes"))
                             .toString();
    return tell({part, verb, neighbour.value(Name).toString()});
}
