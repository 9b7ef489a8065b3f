#include "ozdevice/CounterTable.hpp"

#include "meta/MetaDescription.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/SignalLines.hpp"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace oz::tools {

namespace {

constexpr int TimeWidth = 14; // "14:03:11.482"
constexpr int RateWidth = 12;
constexpr int TotalWidth = 14;

QString right(const QString &text, int width)
{
    return text.rightJustified(width);
}

} // namespace

CounterTable::CounterTable(const FacilityEntry &entry, const QStringList &selected, bool asJson)
    : m_entry(entry), m_json(asJson), m_nameWidth(int(entry.selector.size()))
{
    for (const QMetaProperty &property : meta::propertiesOf(entry.type)) {
        if (property.metaType().id() == QMetaType::ULongLong)
            m_names.append(QLatin1String(property.name()));
    }
    for (const QString &one : selected) {
        auto instance = std::make_unique<FacilityInstance>(entry, one);
        QList<quint64> counters = read(*instance);
        m_rows.push_back({std::move(instance), std::move(counters)});
        m_nameWidth = std::max(m_nameWidth, int(one.size()));
    }
    m_since.start();
    if (!m_json)
        printHead();
}

QList<quint64> CounterTable::read(const FacilityInstance &instance) const
{
    (void)takeLibraryWarnings();
    const bool isRead = m_entry.refresh(instance.object());
    const QString reason = takeLibraryWarnings().join("; "_L1);
    if (!isRead)
        throw CommandError(Unavailable, instance.title() + ": "_L1 + reason);
    QList<quint64> counters;
    for (const QString &name : m_names)
        counters.append(instance.object()->property(name.toLatin1().constData()).toULongLong());
    return counters;
}

void CounterTable::printHead() const
{
    QString names = QString(TimeWidth + m_nameWidth, u' ');
    QString units = u"time"_s.leftJustified(TimeWidth) + m_entry.selector.leftJustified(m_nameWidth);
    for (const QString &name : m_names) {
        names += right(name, RateWidth + TotalWidth);
        units += right(u"per second"_s, RateWidth) + right(u"in all"_s, TotalWidth);
    }
    printLine(painted(Paint::Bold, names));
    printLine(painted(Paint::Bold, units));
}

void CounterTable::print(
    const FacilityInstance &instance, const QList<quint64> &perSecond, const QList<quint64> &totals) const
{
    if (!m_json) {
        const QString now = QDateTime::currentDateTime().toString(u"HH:mm:ss.zzz"_s);
        QString line = painted(Paint::Dim, now.leftJustified(TimeWidth))
            + painted(Paint::Bold, instance.selected().leftJustified(m_nameWidth));
        for (qsizetype i = 0; i < totals.size(); ++i) {
            line += painted(Paint::Value, right(QString::number(perSecond[i]), RateWidth))
                + right(QString::number(totals[i]), TotalWidth);
        }
        printLine(line);
        return;
    }
    const auto object = [this](const QList<quint64> &values) {
        QJsonObject named;
        for (qsizetype i = 0; i < values.size(); ++i)
            named.insert(m_names[i], QJsonValue::fromVariant(values[i]));
        return named;
    };
    QJsonObject line = jsonBeginning(instance);
    line.insert(u"perSecond"_s, object(perSecond));
    line.insert(u"total"_s, object(totals));
    printJson(line, QJsonDocument::Compact);
}

void CounterTable::printNext()
{
    const double seconds = double(m_since.nsecsElapsed()) / 1e9;
    m_since.start();
    for (Row &row : m_rows) {
        const QList<quint64> counters = read(*row.instance);
        QList<quint64> perSecond;
        for (qsizetype i = 0; i < counters.size(); ++i) {
            // The counters restart if another interface has taken the name.
            const quint64 before = row.counters[i];
            const quint64 more = counters[i] >= before ? counters[i] - before : counters[i];
            perSecond.append(quint64(std::llround(double(more) / seconds)));
        }
        row.counters = counters;
        print(*row.instance, perSecond, counters);
    }
}

} // namespace oz::tools
