// Writes the generated regions of the pages in docs/, and the settings in the phone's file.

#include "PhoneFile.hpp"
#include "Regions.hpp"
#include "Tables.hpp"

#include "source/Error.hpp"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDirIterator>
#include <QSaveFile>

#include <cstdio>

using namespace oz::pages;
using oz::services::Error;

namespace {

const QString PhoneName = QStringLiteral("services/data/phone.json");

QString contentOf(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(name + QLatin1String(": ") + file.errorString());
    return QString::fromUtf8(file.readAll());
}

void write(const QString &name, const QString &text)
{
    QSaveFile file(name);
    const QByteArray content = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        throw Error(name + QLatin1String(": ") + file.errorString());
}

// Brings the files of the current folder up to date; with \a onlyCheck, gives the names of those that are
// not.
QStringList staleFiles(bool onlyCheck)
{
    if (const QStringList rows = rowsWithoutHelp(); !rows.isEmpty())
        throw Error(QLatin1String("these have no help:\n  ") + rows.join(QLatin1String("\n  ")));
    QStringList names{PhoneName};
    QDirIterator pages(
        QStringLiteral("docs"), {QStringLiteral("*.md")}, QDir::Files, QDirIterator::Subdirectories);
    while (pages.hasNext())
        names.append(pages.next());
    QStringList missing = regionNames();
    QStringList stale;
    for (const QString &name : names) {
        const QString text = contentOf(name);
        const QString updated = name == PhoneName ? withSettings(text, name)
                                                  : withRegions(text, name, [&](const QString &region) {
                                                        missing.removeAll(region);
                                                        return tablesFor(region);
                                                    });
        if (updated == text)
            continue;
        stale.append(name);
        if (!onlyCheck)
            write(name, updated);
    }
    if (!missing.isEmpty())
        throw Error(QLatin1String("no page has the regions: ") + missing.join(QLatin1String(", ")));
    return stale;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Writes the generated parts of docs/ and of the phone's file."));
    parser.addHelpOption();
    const QCommandLineOption check(
        QStringLiteral("check"), QStringLiteral("Writes nothing, and fails if something is stale."));
    parser.addOption(check);
    parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("The project's folder."));
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);
    try {
        if (!QDir::setCurrent(parser.positionalArguments().first()))
            throw Error(parser.positionalArguments().first() + QLatin1String(": no such folder"));
        const bool onlyCheck = parser.isSet(check);
        const QStringList stale = staleFiles(onlyCheck);
        for (const QString &name : stale) {
            std::fprintf(stderr, "ozpages: %s %s\n", qUtf8Printable(name),
                onlyCheck ? "does not say what the tables say; `./oz pages` writes it" : "written");
        }
        return onlyCheck && !stale.isEmpty() ? 1 : 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ozpages: %s\n", error.what());
        return 1;
    }
}
