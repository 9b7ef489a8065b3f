#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace oz::arguments {

/*! The names of the scenarios that are installed beside this program. */
[[nodiscard]] QStringList installedScenarios();

/*! The whole path of the scenario that a command line calls \a word: a file, or else an installed one by its
 * name; nothing where there is neither. */
[[nodiscard]] std::optional<QString> scenarioFile(const QString &word);

} // namespace oz::arguments
