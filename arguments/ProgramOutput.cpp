#include "ProgramOutput.hpp"

#include <oz/PrintableText.hpp>

#include <QtGlobal>

#include <cstdio>

namespace oz::arguments {

namespace {

constexpr int WrongUse = 2;

QtMessageHandler s_write = nullptr;

} // namespace

void logPrintably()
{
    s_write =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &text) {
            s_write(type, context, printableText(text));
        });
}

int reportWrongUse(const QString &problem)
{
    std::fprintf(
        stderr, "%s\nRun with --help for more information.\n", qUtf8Printable(printableText(problem)));
    return WrongUse;
}

} // namespace oz::arguments
