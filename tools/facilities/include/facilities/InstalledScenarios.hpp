#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace oz::tools {

/*! Returns the absolute path of the scenario \a name, which is a file or an installed scenario. Throws
 * CommandError if there is none. */
[[nodiscard]] QString scenarioFile(const QString &name);
/*! Returns the name and description of each installed scenario. */
[[nodiscard]] QList<QStringList> installedScenarios();

} // namespace oz::tools
