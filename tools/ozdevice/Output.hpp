#pragma once

#include "facilities/CommandError.hpp"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace oz::tools {

/*! Writes one line to standard output at once, with unprintable characters escaped by printableText().
 * Throws CommandError if it cannot be written. */
void printLine(const QString &line);
/*! Writes each line of \a text as printLine() does. */
void printLines(const QString &text);
/*! Writes a JSON object as printLine() does. */
void printJson(const QJsonObject &object, QJsonDocument::JsonFormat format);

/*! Writes the program's name and \a text to standard error, with unprintable characters escaped. */
void printError(const QString &text);

enum class Paint { None, Bold, Dim, Value };
/*! Returns \a text in a colour if standard output is a terminal and NO_COLOR is not set. */
[[nodiscard]] QString painted(Paint paint, const QString &text);

/*! Writes rows in aligned columns. \a paints are the colours of the first columns. */
void printRows(
    const QList<QStringList> &rows, const QString &indentation = {}, const QList<Paint> &paints = {});

/*! Takes over the log of the library and of Qt. The library's warnings are kept for the verbs, and printed
 * only if \a verbose; everything else is printed. */
void captureLog(bool verbose);
/*! Returns the library's warnings since the last call, each once, whatever the logging rules are. */
[[nodiscard]] QStringList takeLibraryWarnings();

} // namespace oz::tools
