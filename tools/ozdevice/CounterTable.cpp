#include "ozdevice/CounterTable.hpp"

#include "ozdevice/Command.hpp"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>

#include <cmath>

namespace oz::tools {

namespace {

constexpr int TimeWidth = 12; // "14:03:11.482"
constexpr int RateWidth = 12;
constexpr int TotalWidth = 14;

QString right(const QString &text, int width)
{
    return text.rightJustified(width);
}

} // namespace

CounterTable::CounterTable(const FacilityEntry &entry, QObject *object, const QString &selected, bool asJson)
    : m_entry(entry), m_object(object), m_selected(selected), m_json(asJson)
{
    for (int i = QObject::staticMetaObject.propertyCount(); i < entry.type->propertyCount(); ++i) {
        const QMetaProperty property = entry.type->property(i);
        if (property.metaType().id() == QMetaType::ULongLong)
            m_names.append(QLatin1String(property.name()));
    }
    m_before = read();
    m_since.start();
    if (!m_json)
        printHead();
}

QList<quint64> CounterTable::read() const
{
    m_entry.readAnew(m_object);
    if (const QStringList warnings = takeLibraryWarnings(); !warnings.isEmpty()) {
        throw CommandError(Unavailable,
            m_entry.name + u' ' + m_selected + QLatin1String(": ") + warnings.join(QLatin1String("; ")));
    }
    QList<quint64> counters;
    for (const QString &name : m_names)
        counters.append(m_object->property(name.toLatin1().constData()).toULongLong());
    return counters;
}

void CounterTable::printHead() const
{
    QString names = QString(TimeWidth, u' ');
    QString units = QStringLiteral("time").leftJustified(TimeWidth);
    for (const QString &name : m_names) {
        names += right(name, RateWidth + TotalWidth);
        units += right(QStringLiteral("per second"), RateWidth) + right(QStringLiteral("in all"), TotalWidth);
    }
    printLine(painted(Paint::Bold, names));
    printLine(painted(Paint::Bold, units));
}

void CounterTable::printNext()
{
    const QList<quint64> counters = read();
    const double seconds = double(m_since.nsecsElapsed()) / 1e9;
    m_since.start();
    const QDateTime now = QDateTime::currentDateTime();
    QString line = painted(Paint::Dim, now.toString(QStringLiteral("HH:mm:ss.zzz")));
    QJsonObject rates;
    QJsonObject totals;
    for (qsizetype i = 0; i < counters.size(); ++i) {
        // Counters begin anew where another interface has taken the name.
        const quint64 more = counters[i] >= m_before[i] ? counters[i] - m_before[i] : counters[i];
        const auto rate = qint64(std::llround(double(more) / seconds));
        line += painted(Paint::Value, right(QString::number(rate), RateWidth))
            + right(QString::number(counters[i]), TotalWidth);
        rates.insert(m_names[i], rate);
        totals.insert(m_names[i], QJsonValue::fromVariant(counters[i]));
    }
    m_before = counters;
    if (m_json) {
        line = QString::fromUtf8(
            QJsonDocument(QJsonObject{{QStringLiteral("time"), now.toUTC().toString(Qt::ISODateWithMs)},
                              {QStringLiteral("facility"), m_entry.name}, {m_entry.selector, m_selected},
                              {QStringLiteral("perSecond"), rates}, {QStringLiteral("total"), totals}})
                .toJson(QJsonDocument::Compact));
    }
    printLine(line);
}

} // namespace oz::tools
