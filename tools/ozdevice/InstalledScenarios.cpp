#include "ozdevice/InstalledScenarios.hpp"

#include "ozdevice/Command.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace oz::tools {

namespace {

QDir installedFolder()
{
    // Beside this program, in a build tree as when installed.
    return {QCoreApplication::applicationDirPath() + QLatin1String("/../share/ozdevice/scenarios")};
}

QStringList installedNames()
{
    QStringList names;
    for (const QString &file :
        installedFolder().entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name))
        names.append(file.chopped(5));
    return names;
}

} // namespace

QString scenarioFile(const QString &name)
{
    if (QFileInfo::exists(name))
        return QFileInfo(name).absoluteFilePath();
    const QStringList installed = installedNames();
    if (installed.contains(name))
        return QDir::cleanPath(installedFolder().absoluteFilePath(name + QLatin1String(".json")));
    throw CommandError(Failed,
        name.contains(u'/') || name.endsWith(QLatin1String(".json"))
            ? QString(QLatin1String("there is no file ") + name)
            : unknownText(QStringLiteral("there is no file and no installed scenario"), name, installed));
}

QList<QStringList> installedScenarios()
{
    static const QRegularExpression description(QStringLiteral(R"re("description": *"([^"]*)")re"));
    QList<QStringList> rows;
    for (const QString &name : installedNames()) {
        QFile file(scenarioFile(name));
        if (file.open(QIODevice::ReadOnly))
            rows.append({name, description.match(QString::fromUtf8(file.readAll())).captured(1)});
    }
    return rows;
}

} // namespace oz::tools
