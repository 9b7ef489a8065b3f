#include "Texts.hpp"

#include "facility/Facility.hpp"

namespace oz::pages {

using namespace services;

QString textsForTranslators(const QVariantMap &parts)
{
    QStringList lines;
    const auto add = [&](const char *context, QString text) {
        text.replace(u'\\', QLatin1String("\\\\")).replace(u'"', QLatin1String("\\\""));
        lines.append(
            QStringLiteral("    QT_TRANSLATE_NOOP(\"%1\", \"%2\"),").arg(QLatin1String(context), text));
    };
    for (const Facility &facility : facilities())
        add("Facility", facility.title);
    for (const QVariant &part : parts) {
        for (const QVariant &each : part.toMap().value(QStringLiteral("verbs")).toList()) {
            const QVariantMap verb = each.toMap();
            add("Verb", verb.value(QStringLiteral("name")).toString());
            add("Help", verb.value(QStringLiteral("help")).toString());
        }
    }
    lines.removeDuplicates();
    return QLatin1String("#include <QtGlobal>\n\nconst char *const texts[] = {\n") + lines.join(u'\n')
        + QLatin1String("\n};\n");
}

} // namespace oz::pages
