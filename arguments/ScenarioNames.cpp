#include "ScenarioNames.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace oz::arguments {

namespace {

const QString Suffix = QStringLiteral(".json");

// In a build tree as when installed.
QDir installedFolder()
{
    return {QCoreApplication::applicationDirPath() + QLatin1String("/../share/ozdevice/scenarios")};
}

} // namespace

QStringList installedScenarios()
{
    QStringList names;
    for (const QString &file : installedFolder().entryList({u'*' + Suffix}, QDir::Files, QDir::Name))
        names.append(file.chopped(Suffix.size()));
    return names;
}

std::optional<QString> scenarioFile(const QString &word)
{
    if (const QFileInfo file(word); file.exists() && !file.isDir())
        return file.absoluteFilePath();
    if (installedScenarios().contains(word))
        return QDir::cleanPath(installedFolder().absoluteFilePath(word + Suffix));
    return std::nullopt;
}

} // namespace oz::arguments
