#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace oz::tools {

/*! The whole path of the scenario \a name: a file, or one that is installed; throws CommandError. */
[[nodiscard]] QString scenarioFile(const QString &name);
/*! Those that are installed, with what they are about. */
[[nodiscard]] QList<QStringList> installedScenarios();

} // namespace oz::tools
