#include "PhoneControl.hpp"

#include <utility>

using oz::PpsObject;
using oz::PpsOpenMode;

namespace {

const QString Name = QStringLiteral("name");
const QString Source = QStringLiteral("source");

QVariantMap attributesOf(const QByteArray &message)
{
    const QVariantMap objects = PpsObject::decode(message);
    return objects.isEmpty() ? QVariantMap() : objects.first().toMap();
}

} // namespace

PhoneControl::PhoneControl(QObject *parent)
    : QObject(parent), m_statusObject(QStringLiteral("/pps/system/ozdeviced/status")),
      m_ledStatus(QStringLiteral("/pps/services/led/status")),
      m_vibration(QStringLiteral("/pps/services/vibration/activity")), m_led(Qt::transparent)
{
    connect(&m_statusObject, &PpsObject::readyRead, this, &PhoneControl::readStatus);
    connect(&m_ledStatus, &PpsObject::readyRead, this, &PhoneControl::readLed);
    connect(&m_vibration, &PpsObject::readyRead, this, &PhoneControl::readVibration);
    connect(&m_again, &QTimer::timeout, this, &PhoneControl::openObjects);
    m_again.setInterval(2000);
    openObjects();
    connect(&m_link, &DaemonLink::opened, this, &PhoneControl::follow);
}

void PhoneControl::openObjects()
{
    bool isComplete = true;
    const auto open = [&](PpsObject *object, void (PhoneControl::*read)()) {
        if (object->isOpen())
            return;
        if (object->open(PpsOpenMode::Subscribe))
            (this->*read)();
        else
            isComplete = false;
    };
    open(&m_statusObject, &PhoneControl::readStatus);
    open(&m_ledStatus, &PhoneControl::readLed);
    open(&m_vibration, &PhoneControl::readVibration);
    if (isComplete)
        m_again.stop();
    else
        m_again.start();
}

void PhoneControl::follow()
{
    openObjects();
    m_version = QVariant();
    m_description.clear();
    look();
}

// Asks anew as long as there is somebody who answers.
void PhoneControl::look()
{
    QVariantMap known;
    if (m_version.isValid())
        known.insert(QStringLiteral("from"), m_version);
    m_link.ask(QStringLiteral("phone"), known, [this](const QVariantMap &told, const QString &problem) {
        if (!problem.isEmpty())
            return; // it is opened again
        m_version = told.value(QStringLiteral("version"));
        if (const QString mark = told.value(QStringLiteral("description")).toString();
            std::exchange(m_description, mark) != mark)
            describe();
        look();
        const auto take = [&]<typename Value>(
                              Value *value, const char *name, void (PhoneControl::*signal)()) {
            const auto next = told.value(QLatin1String(name)).template value<Value>();
            if (std::exchange(*value, next) != next)
                Q_EMIT(this->*signal)();
        };
        take(&m_values, "values", &PhoneControl::valuesChanged);
        take(&m_neighbours, "neighbours", &PhoneControl::neighboursChanged);
        take(&m_scenario, "scenario", &PhoneControl::scenarioChanged);
    });
}

void PhoneControl::describe()
{
    m_link.ask(QStringLiteral("describe"), {}, [this](const QVariantMap &told, const QString &problem) {
        if (!problem.isEmpty())
            return;
        m_parts = told.value(QStringLiteral("simulated")).toMap();
        gather();
    });
}

void PhoneControl::gather()
{
    // What is no facility, such as the clock, is the simulated phone's all the same.
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
    }
}

int PhoneControl::tell(const QStringList &words)
{
    const QString order = words.join(u' ');
    const int number = ++m_orders;
    m_link.ask(QStringLiteral("sim"),
        {{QStringLiteral("facility"), words.value(0)}, {QStringLiteral("verb"), words.value(1)},
            {QStringLiteral("arguments"), words.mid(2)}},
        [this, order, number](
            const QVariantMap &, const QString &problem) { Q_EMIT answered(order, problem, number); });
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

void PhoneControl::readStatus()
{
    m_status = attributesOf(m_statusObject.read()).value(QStringLiteral("facilities")).toMap();
    gather();
}

void PhoneControl::readLed()
{
    const QVariantMap lit = attributesOf(m_ledStatus.read());
    const auto element = [&](const QString &name) {
        const QVariant value = lit.value(name);
        return value.toBool() && value != QStringLiteral("off") ? 255 : 0;
    };
    const QColor shown(
        element(QStringLiteral("red")), element(QStringLiteral("green")), element(QStringLiteral("blue")));
    m_led = shown == QColor(Qt::black) ? QColor(Qt::transparent) : shown;
    Q_EMIT ledChanged();
}

void PhoneControl::readVibration()
{
    m_vibrating = attributesOf(m_vibration.read()).value(QStringLiteral("running")).toBool();
    Q_EMIT vibratingChanged();
}
