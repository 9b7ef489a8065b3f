#include "ozdevice/SignalLines.hpp"

#include "meta/MetaText.hpp"
#include "ozdevice/Output.hpp"

#include <QDateTime>

namespace oz::tools {

QString signalText(const QMetaMethod &signal, const QVariantList &arguments)
{
    QStringList texts;
    for (const QVariant &argument : arguments)
        texts.append(painted(Paint::Value, meta::valueText(argument)));
    return QLatin1String(signal.name()) + u'(' + texts.join(", "_L1) + u')';
}

QString lineBeginning(const FacilityInstance &instance)
{
    const QString now = QDateTime::currentDateTime().toString(u"HH:mm:ss.zzz"_s);
    return painted(Paint::Dim, now) + "  "_L1 + painted(Paint::Bold, instance.title()) + "  "_L1;
}

QJsonObject jsonBeginning(const FacilityInstance &instance)
{
    QJsonObject beginning{{u"time"_s, QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {u"facility"_s, instance.entry().name}};
    if (!instance.selected().isEmpty())
        beginning.insert(instance.entry().selector, instance.selected());
    return beginning;
}

} // namespace oz::tools
