#include "ozdevice/Output.hpp"

#include <oz/PrintableText.hpp>

#include <QLoggingCategory>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace oz::tools {

namespace {

const char *const LibraryCategory = "oz.device";

QStringList s_libraryWarnings;
bool s_verbose = false;
QLoggingCategory::CategoryFilter s_rules = nullptr;
bool s_rulesShowLibrary = true;

// Indexed by Paint; the first code ends the others.
constexpr const char *PaintCodes[] = {"\033[0m", "\033[1m", "\033[2m", "\033[32m"};

// Marks the place of a colour code until the line is printed. It is a random character for private use, so
// that text from strangers in the line cannot contain it.
QString paintMark()
{
    static const QChar mark(0xE000 + QRandomGenerator::global()->bounded(0x1900));
    return mark;
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const bool isOfLibrary = qstrcmp(context.category, LibraryCategory) == 0;
    if (isOfLibrary ? s_verbose && s_rulesShowLibrary : true)
        std::fprintf(stderr, "%s\n", qUtf8Printable(printableText(qFormatLogMessage(type, context, text))));
    if (isOfLibrary && type == QtWarningMsg && !s_libraryWarnings.contains(text))
        s_libraryWarnings.append(text);
}

// The logging rules decide what is printed; the verbs receive the warnings in any case.
void filterCategory(QLoggingCategory *category)
{
    s_rules(category);
    if (qstrcmp(category->categoryName(), LibraryCategory) != 0)
        return;
    s_rulesShowLibrary = category->isWarningEnabled();
    category->setEnabled(QtWarningMsg, true);
}

} // namespace

void printLine(const QString &line)
{
    QString shown = printableText(line);
    for (std::size_t i = 0; i < std::size(PaintCodes); ++i)
        shown.replace(paintMark() + QString::number(i), QLatin1String(PaintCodes[i]));
    const QByteArray text = (shown + u'\n').toUtf8();
    if (std::fwrite(text.constData(), 1, std::size_t(text.size()), stdout) != std::size_t(text.size())
        || std::fflush(stdout) != 0) {
        throw CommandError(Failed, "cannot write to standard output: "_L1 + qt_error_string(errno));
    }
}

void printLines(const QString &text)
{
    for (const QString &line : text.split(u'\n'))
        printLine(line);
}

// JSON escapes unprintable characters the same way.
void printJson(const QJsonObject &object, QJsonDocument::JsonFormat format)
{
    printLines(QString::fromUtf8(QJsonDocument(object).toJson(format)).trimmed());
}

void printError(const QString &text)
{
    std::fprintf(stderr, "ozdevice: %s\n", qUtf8Printable(printableText(text)));
}

QString painted(Paint paint, const QString &text)
{
    static const bool terminal = ::isatty(STDOUT_FILENO) && qEnvironmentVariableIsEmpty("NO_COLOR");
    if (!terminal || paint == Paint::None)
        return text;
    return paintMark() + QString::number(int(paint)) + text + paintMark() + QString::number(int(Paint::None));
}

void printRows(const QList<QStringList> &rows, const QString &indentation, const QList<Paint> &paints)
{
    QList<qsizetype> widths;
    for (const QStringList &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (QStringList row : rows) {
        while (!row.isEmpty() && row.last().isEmpty())
            row.removeLast();
        QString line = indentation;
        for (qsizetype i = 0; i < row.size(); ++i) {
            const bool isLast = i + 1 == row.size();
            line +=
                painted(paints.value(i, Paint::None), isLast ? row[i] : row[i].leftJustified(widths[i] + 2));
        }
        printLine(line);
    }
}

void captureLog(bool verbose)
{
    s_verbose = verbose;
    qInstallMessageHandler(&handleMessage);
    s_rules = QLoggingCategory::installFilter(nullptr);
    QLoggingCategory::installFilter(&filterCategory);
}

QStringList takeLibraryWarnings()
{
    return std::exchange(s_libraryWarnings, {});
}

} // namespace oz::tools
