#pragma once

#include "facilities/CommandError.hpp"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace oz::tools {

/*! Writes one line to standard output, at once, as printableText() has it; throws CommandError where it
 * cannot be written. */
void printLine(const QString &line);
/*! The same of each line of a text. */
void printLines(const QString &text);
/*! The same of a JSON object. */
void printJson(const QJsonObject &object, QJsonDocument::JsonFormat format);

/*! Says something on standard error, after the program's name, as printableText() has it. */
void printError(const QString &text);

enum class Paint { None, Bold, Dim, Value };
/*! \a text in a colour, where standard output is a terminal and NO_COLOR is not set. */
[[nodiscard]] QString painted(Paint paint, const QString &text);

/*! Writes rows whose cells stand under each other; \a paints are those of the first columns. */
void printRows(
    const QList<QStringList> &rows, const QString &indentation = {}, const QList<Paint> &paints = {});

/*! Hears what the library and Qt log from now on: the library's warnings are for the verbs to tell, and only
 * printed where \a verbose, everything else is. */
void captureLog(bool verbose);
/*! The library's warnings since the last call, each once, whatever the logging rules say. */
[[nodiscard]] QStringList takeLibraryWarnings();

} // namespace oz::tools
