// Writes what comes from the facilities' tables: regions of the pages in docs/, the settings in the phone's
// file, a header of the test kit, and the stub of the one for Python.

#include "KitParts.hpp"
#include "PhoneFile.hpp"
#include "PythonStub.hpp"
#include "Regions.hpp"
#include "Tables.hpp"
#include "Texts.hpp"

#include "source/Error.hpp"

#include <oz/PpsObject.hpp>
#include <oz/client/DaemonClient.hpp>
#include <oz/client/DaemonObjects.hpp>
#include <oz/client/PrivateDaemon.hpp>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDirIterator>
#include <QSaveFile>

#include <cstdio>

using namespace oz::pages;
using oz::services::Error;

namespace {

const QString PhoneName = QStringLiteral("services/data/phone.json");
const QString KitName = QStringLiteral("testing/include/oz/testing/PhoneParts.hpp");
const QString StubName = QStringLiteral("python/ozdevice/parts.pyi");

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

// The simulated phone as the daemon describes it.
struct DescribedPhone
{
    QVariantMap parts; // with the faults of their services
    QVariantMap state; // the values of their verbs, and what is around the phone
};

DescribedPhone describedPhone()
{
    const oz::client::PrivateDaemon daemon(
        {.program = QCoreApplication::applicationDirPath() + QLatin1String("/ozdeviced")});
    QFile phone(daemon.root() + oz::client::DaemonObjects::Phone);
    if (!phone.open(QIODevice::ReadOnly))
        throw Error(phone.fileName() + QLatin1String(": ") + phone.errorString());
    return {oz::client::DaemonClient(daemon.root())
                .ask(QStringLiteral("describe"))
                .toMap()
                .value(QStringLiteral("simulated"))
                .toMap(),
        oz::PpsObject::decode(phone.readAll()).value(QStringLiteral("@phone")).toMap()};
}

// Brings the files of the current folder up to date; with \a onlyCheck, gives the names of those that are
// not.
QStringList staleFiles(bool onlyCheck)
{
    if (const QStringList rows = rowsWithoutHelp(); !rows.isEmpty())
        throw Error(QLatin1String("these have no help:\n  ") + rows.join(QLatin1String("\n  ")));
    QStringList names{PhoneName, KitName, StubName};
    const DescribedPhone phone = describedPhone();
    QDirIterator pages(
        QStringLiteral("docs"), {QStringLiteral("*.md")}, QDir::Files, QDirIterator::Subdirectories);
    while (pages.hasNext())
        names.append(pages.next());
    QStringList missing = regionNames();
    QStringList stale;
    for (const QString &name : names) {
        const QString text = contentOf(name);
        const auto tables = [&](const QString &region) {
            missing.removeAll(region);
            return tablesFor(region);
        };
        const QString updated = name == PhoneName ? withSettings(text, name)
            : name == KitName                     ? phonePartsHeader(phone.parts)
            : name == StubName                    ? pythonStub(phone.parts, phone.state)
                                                  : withRegions(text, name, tables);
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
        QStringLiteral("Writes the generated parts of docs/, of the phone's file and of the test kits."));
    parser.addHelpOption();
    const QCommandLineOption check(
        QStringLiteral("check"), QStringLiteral("Writes nothing, and fails if something is stale."));
    parser.addOption(check);
    const QCommandLineOption texts(QStringLiteral("texts"),
        QStringLiteral("Writes nothing but a file with the texts that the panel's translators translate."),
        QStringLiteral("file"));
    parser.addOption(texts);
    parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("The project's folder."));
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);
    try {
        if (parser.isSet(texts)) {
            write(parser.value(texts), textsForTranslators(describedPhone().parts));
            return 0;
        }
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
