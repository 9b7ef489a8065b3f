#pragma once

#include <QMap>
#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace oz::services::SysFolder {

/*! The contents of files by their names, without white space around; those that cannot be read are not in it.
 */
using Values = QMap<QString, QString>;

/*! The content of a file of the kernel's, as in Values, the first text where there are several; nothing where
 * it cannot be read. It may take its time. */
[[nodiscard]] std::optional<QString> readFile(const QString &file);
/*! As readFile() of the files \a names of a \a folder. */
[[nodiscard]] Values readFiles(const QString &folder, const QStringList &names);
/*! The number that a file holds; nothing where it holds none, or cannot be read. */
[[nodiscard]] std::optional<double> number(const Values &values, const QString &name);

} // namespace oz::services::SysFolder
