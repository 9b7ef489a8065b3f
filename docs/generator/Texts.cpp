#include "Texts.hpp"

#include "facility/Facility.hpp"

#include <QRegularExpression>

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
    static const QRegularExpression brackets(QStringLiteral(R"([\[\]]|,\.\.\.)"));
    const auto addArguments = [&](const QVariantMap &verb) {
        const QVariantMap choices = verb.value(QStringLiteral("choices")).toMap();
        for (QString argument : verb.value(QStringLiteral("arguments")).toStringList()) {
            argument.remove(brackets);
            // Capitals name what the person gives; the rest are words as they are.
            for (const QString &word : argument.split(u'|')) {
                if (word != u"on" && word != u"off")
                    add(word == word.toUpper() ? "Argument" : "Word", word);
            }
        }
        for (auto choice = choices.begin(); choice != choices.end(); ++choice) {
            if (choice.key() == u"ID")
                continue; // names that the phone's file gives
            for (const QVariant &title : choice->toMap().value(QStringLiteral("titles")).toMap())
                add("Word", title.toString());
        }
    };
    for (const Facility &facility : facilities())
        add("Facility", facility.title);
    for (const QVariant &part : parts) {
        for (const QVariant &each : part.toMap().value(QStringLiteral("verbs")).toList()) {
            const QVariantMap verb = each.toMap();
            add("Verb", verb.value(QStringLiteral("name")).toString());
            add("Help", verb.value(QStringLiteral("help")).toString());
            addArguments(verb);
        }
    }
    lines.removeDuplicates();
    return QLatin1String("#include <QtGlobal>\n\nconst char *const texts[] = {\n") + lines.join(u'\n')
        + QLatin1String("\n};\n");
}

} // namespace oz::pages
