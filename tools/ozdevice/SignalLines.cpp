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
    return QLatin1String(signal.name()) + u'(' + texts.join(QLatin1String(", ")) + u')';
}

bool isNumericTwin(const QMetaMethod &signal)
{
    const QMetaObject *type = signal.enclosingMetaObject();
    for (int i = type->methodOffset(); i < signal.methodIndex(); ++i) {
        const QMetaMethod other = type->method(i);
        if (other.methodType() == QMetaMethod::Signal && other.name() == signal.name()
            && other.parameterCount() == signal.parameterCount())
            return true;
    }
    return false;
}

QString lineBeginning(const FacilityInstance &instance)
{
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz"));
    return painted(Paint::Dim, now) + QLatin1String("  ") + painted(Paint::Bold, instance.title())
        + QLatin1String("  ");
}

QJsonObject jsonBeginning(const FacilityInstance &instance)
{
    QJsonObject beginning{
        {QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {QStringLiteral("facility"), instance.entry().name}};
    if (!instance.selected().isEmpty())
        beginning.insert(instance.entry().selector, instance.selected());
    return beginning;
}

} // namespace oz::tools
