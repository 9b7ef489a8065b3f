#include <oz/PrintableText.hpp>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QSize>
#include <QTimer>
#include <QTranslator>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string_view>

namespace {

// By when the daemon has answered, and what moves has come to rest.
constexpr std::chrono::milliseconds PictureTime{1500};

enum Status { Failed = 1, WrongUse = 2 };

int complain(Status status, const QString &text)
{
    std::fprintf(stderr, "ozdevice-panel: %s\n", qUtf8Printable(oz::printableText(text)));
    return status;
}

// The help is there for who has no screen, too.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view word(argv[i]);
        if (word == "--help" || word == "-h" || word == "--help-all")
            return std::make_unique<QCoreApplication>(argc, argv);
    }
    return std::make_unique<QGuiApplication>(argc, argv);
}

// The facilities and other pages that the panel has words for, whether or not a phone has them.
QStringList knownPages(QQmlEngine *engine)
{
    QQmlComponent component(engine);
    component.setData(
        "import QtQml\nimport oz.panel\nQtObject { property var pages: Object.keys(Words.facilities) }\n",
        QUrl());
    const std::unique_ptr<QObject> words(component.create());
    return words ? words->property("pages").toStringList() : QStringList();
}

// Nothing for what is no size.
QSize sizeOf(const QString &text)
{
    const QStringList sides = text.split(u'x');
    return sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : QSize();
}

} // namespace

int main(int argc, char **argv)
{
    char name[] = "ozdevice-panel"; // which the help begins with, wherever the program is
    argv[0] = name;
    const auto application = makeApplication(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("ozdevice"));
    QCommandLineParser words;
    words.setApplicationDescription(QStringLiteral("Shows a phone, and tells a simulated one what to do."));
    words.addHelpOption();
    words.addOption({QStringLiteral("picture"), QStringLiteral("Takes a picture of the window, and ends."),
        QStringLiteral("file")});
    words.addOption({QStringLiteral("page"),
        QStringLiteral("Begins with this page: a facility, or scenarios."), QStringLiteral("name")});
    words.addOption({QStringLiteral("dark"), QStringLiteral("Begins with light on dark.")});
    words.addOption({QStringLiteral("size"), QStringLiteral("The window's size, such as 360x640."),
        QStringLiteral("size")});
    if (!words.parse(QCoreApplication::arguments()))
        return complain(WrongUse, words.errorText());
    if (words.isSet(QStringLiteral("help")) || words.isSet(QStringLiteral("help-all")))
        words.process(*application);
    if (!words.positionalArguments().isEmpty())
        return complain(WrongUse, QLatin1String("unexpected: ") + words.positionalArguments().join(u' '));
    const QSize size = sizeOf(words.value(QStringLiteral("size")));
    if (words.isSet(QStringLiteral("size")) && size.isEmpty())
        return complain(WrongUse,
            QLatin1String("--size: expected WIDTHxHEIGHT, not '") + words.value(QStringLiteral("size"))
                + u'\'');

    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    QTranslator translator;
    if (translator.load(QLocale(), QStringLiteral("panel"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        QGuiApplication::installTranslator(&translator);

    QQmlApplicationEngine engine;
    const QString here = QGuiApplication::applicationDirPath() + u'/';
    engine.addImportPath(here + QStringLiteral(OZ_MODULES_FROM_PROGRAM));
    engine.addImportPath(here + QLatin1String("../qml"));
    QVariantMap properties{{QStringLiteral("dark"), words.isSet(QStringLiteral("dark"))}};
    if (const QString page = words.value(QStringLiteral("page")); words.isSet(QStringLiteral("page"))) {
        const QStringList pages = knownPages(&engine);
        if (!pages.isEmpty() && !pages.contains(page))
            return complain(WrongUse,
                QLatin1String("there is no page '") + page + QLatin1String("'; there is ")
                    + pages.join(QLatin1String(", ")));
        properties.insert(QStringLiteral("page"), page);
    }
    if (!size.isEmpty()) {
        properties.insert(QStringLiteral("width"), size.width());
        properties.insert(QStringLiteral("height"), size.height());
    }
    engine.setInitialProperties(properties);
    engine.loadData("import oz.panel\nPanelWindow { }\n");
    if (engine.rootObjects().isEmpty())
        return complain(Failed, QStringLiteral("the window cannot be shown; are Qt Quick's modules there?"));
    if (const QString file = words.value(QStringLiteral("picture")); !file.isEmpty()) {
        auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
        QTimer::singleShot(PictureTime, window, [window, file] {
            const bool isSaved = window->grabWindow().save(file);
            QGuiApplication::exit(
                isSaved ? 0 : complain(Failed, QLatin1String("the picture cannot be written to ") + file));
        });
    }
    return QGuiApplication::exec();
}
