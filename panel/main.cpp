#include <oz/PpsObject.hpp>
#include <oz/PrintableText.hpp>
#include <oz/client/DaemonObjects.hpp>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QSize>
#include <QTimer>
#include <QTranslator>
#include <QVariantMap>

#include <chrono>
#include <cstdio>

namespace {

const QString Dark = QStringLiteral("dark");
const QString Page = QStringLiteral("page");
const QString Picture = QStringLiteral("picture");
const QString Size = QStringLiteral("size");

// After this time the daemon has answered and animations have ended.
constexpr std::chrono::milliseconds PictureTime{1500};

enum Status { Failed = 1, WrongUse = 2 };

int fail(Status status, const QString &text)
{
    std::fprintf(stderr, "ozdevice-panel: %s\n", qUtf8Printable(oz::printableText(text)));
    return status;
}

void declareOptions(QCommandLineParser *parser)
{
    parser->setApplicationDescription(QStringLiteral("Shows a phone, and tells a simulated one what to do."));
    parser->addHelpOption();
    parser->addOption(
        {Picture, QStringLiteral("Takes a picture of the window, and ends."), QStringLiteral("file")});
    parser->addOption(
        {Page, QStringLiteral("Begins with this page: a facility, or scenarios."), QStringLiteral("name")});
    parser->addOption({Dark, QStringLiteral("Begins with light on dark.")});
    parser->addOption({Size, QStringLiteral("The window's size, such as 360x640."), QStringLiteral("size")});
}

// The pages of the phone that services publish; none without services.
QStringList knownPages()
{
    oz::PpsObject status(oz::client::DaemonObjects::Status);
    if (!status.open(oz::PpsOpenMode::Subscribe))
        return {};
    const QVariantMap told = oz::PpsObject::decode(status.read()).value(QStringLiteral("@status")).toMap();
    QStringList pages = told.value(QStringLiteral("facilities")).toMap().keys();
    if (!pages.isEmpty())
        pages.append({QStringLiteral("clock"), QStringLiteral("scenarios")});
    pages.sort();
    return pages;
}

// An invalid size unless the text is one.
QSize sizeOf(const QString &text)
{
    const QStringList sides = text.split(u'x');
    return sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : QSize();
}

// Describes the first option whose value is wrong; empty if there is none.
QString problemOf(const QCommandLineParser &options)
{
    if (const QString size = options.value(Size); options.isSet(Size) && sizeOf(size).isEmpty())
        return QLatin1String("--size: expected WIDTHxHEIGHT, not '") + size + u'\'';
    if (!options.isSet(Page))
        return {};
    const QString page = options.value(Page);
    const QStringList pages = knownPages();
    if (pages.isEmpty() || pages.contains(page))
        return {};
    return QLatin1String("there is no page '") + page + QLatin1String("'; there is ")
        + pages.join(QLatin1String(", "));
}

// Prints the help, which ends the program, or returns what problemOf() does. Without a display Qt ends the
// program as soon as there is a QGuiApplication, so this comes before. Unknown options may be those of Qt's
// platforms, which only a QGuiApplication knows.
QString checkWithoutDisplay(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser options;
    declareOptions(&options);
    (void)options.parse(QCoreApplication::arguments());
    if (options.isSet(QStringLiteral("help")) || options.isSet(QStringLiteral("help-all")))
        options.process(application);
    return problemOf(options);
}

QVariantMap windowProperties(const QCommandLineParser &options)
{
    QVariantMap properties{{Dark, options.isSet(Dark)}};
    if (options.isSet(Page))
        properties.insert(Page, options.value(Page));
    if (const QSize size = sizeOf(options.value(Size)); !size.isEmpty()) {
        properties.insert(QStringLiteral("width"), size.width());
        properties.insert(QStringLiteral("height"), size.height());
    }
    return properties;
}

void takePictureLater(QQuickWindow *window, const QString &file)
{
    QTimer::singleShot(PictureTime, window, [window, file] {
        const bool isSaved = window->grabWindow().save(file);
        QGuiApplication::exit(
            isSaved ? 0 : fail(Failed, QLatin1String("the picture cannot be written to ") + file));
    });
}

} // namespace

int main(int argc, char **argv)
{
    char name[] = "ozdevice-panel"; // the help begins with it
    argv[0] = name;
    if (const QString problem = checkWithoutDisplay(argc, argv); !problem.isEmpty())
        return fail(WrongUse, problem);

    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("ozdevice"));
    QCommandLineParser options;
    declareOptions(&options);
    if (!options.parse(QCoreApplication::arguments()))
        return fail(WrongUse, options.errorText());
    if (!options.positionalArguments().isEmpty())
        return fail(WrongUse, QLatin1String("unexpected: ") + options.positionalArguments().join(u' '));

    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    QTranslator translator;
    if (translator.load(QLocale(), QStringLiteral("panel"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        QGuiApplication::installTranslator(&translator);

    QQmlApplicationEngine engine;
    const QString here = QGuiApplication::applicationDirPath() + u'/';
    engine.addImportPath(here + QStringLiteral(OZ_MODULES_FROM_PROGRAM));
    engine.addImportPath(here + QLatin1String("../qml"));
    engine.setInitialProperties(windowProperties(options));
    engine.loadData("import oz.panel\nPanelWindow { }\n");
    if (engine.rootObjects().isEmpty())
        return fail(Failed, QStringLiteral("the window cannot be shown; are Qt Quick's modules there?"));
    if (options.isSet(Picture)) {
        takePictureLater(
            qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst()), options.value(Picture));
    }
    return QGuiApplication::exec();
}
