#include "Regions.hpp"

#include "source/Error.hpp"

namespace oz::pages {

using services::Error;

QString withRegions(const QString &page, const QString &name,
    const std::function<QStringList(const QString &region)> &contentOf)
{
    const QString begin = QStringLiteral("<!-- generated: ");
    const QString beginEnd = QStringLiteral(" -->");
    const QString end = QStringLiteral("<!-- end -->");
    const QStringList lines = page.split(u'\n');
    QStringList filled;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        filled.append(lines[i]);
        if (!lines[i].startsWith(begin))
            continue;
        const QString place = name + u':' + QString::number(i + 1) + QLatin1String(": ");
        const qsizetype last = lines.indexOf(end, i);
        if (last < 0)
            throw Error(place + QLatin1String("no line '") + end + QLatin1String("' ends the region"));
        QStringList content;
        try {
            content = contentOf(lines[i].sliced(begin.size()).chopped(beginEnd.size()));
        } catch (const Error &error) {
            throw Error(place + QString::fromUtf8(error.what()));
        }
        // Markdown wants an empty line between a comment and a table.
        filled.append(QString());
        filled.append(content);
        filled.append({QString(), end});
        i = last;
    }
    return filled.join(u'\n');
}

} // namespace oz::pages
