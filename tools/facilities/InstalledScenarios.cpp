#include "facilities/InstalledScenarios.hpp"

#include "ScenarioNames.hpp"
#include "facilities/CommandError.hpp"

#include <QFile>
#include <QRegularExpression>

namespace oz::tools {

QString scenarioFile(const QString &name)
{
    if (const auto file = arguments::scenarioFile(name))
        return *file;
    throw CommandError(Failed,
        name.contains(u'/') || name.endsWith(".json"_L1)
            ? QString("there is no file "_L1 + name)
            : unknownText(
                u"there is no file and no installed scenario"_s, name, arguments::installedScenarios()));
}

QList<QStringList> installedScenarios()
{
    static const QRegularExpression description(uR"re("description": *"([^"]*)")re"_s);
    QList<QStringList> rows;
    for (const QString &name : arguments::installedScenarios()) {
        QFile file(scenarioFile(name));
        if (file.open(QIODevice::ReadOnly))
            rows.append({name, description.match(QString::fromUtf8(file.readAll())).captured(1)});
    }
    return rows;
}

} // namespace oz::tools
