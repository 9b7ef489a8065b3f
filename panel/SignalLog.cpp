#include "SignalLog.hpp"

#include "facilities/FacilityTable.hpp"
#include "meta/MetaText.hpp"

#include <QTime>

using namespace oz;

SignalLog::SignalLog(QObject *parent) : QStringListModel(parent)
{
    for (const tools::FacilityEntry &entry : tools::facilityTable()) {
        const QStringList selected = entry.instances ? entry.instances() : QStringList{QString()};
        for (const QString &instance : selected) {
            m_facilities.push_back(entry.make(instance));
            m_taps.push_back(std::make_unique<meta::SignalTap>(m_facilities.back().get(),
                [this, title = entry.title(instance)](
                    const QMetaMethod &signal, const QVariantList &arguments) {
                    QStringList texts;
                    for (const QVariant &argument : arguments)
                        texts.append(meta::valueText(argument));
                    append(title + u' ' + QLatin1String(signal.name()) + u'('
                        + texts.join(QLatin1String(", ")) + u')');
                }));
        }
    }
}

SignalLog::~SignalLog() = default;

void SignalLog::append(const QString &line)
{
    constexpr int most = 1000;
    if (rowCount() == most)
        removeRow(0);
    const int row = rowCount();
    insertRow(row);
    const QString now = QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz"));
    setData(index(row), QString(now + u' ' + line));
}
