#include <QCommandLineParser>
#include <QGuiApplication>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>
#include <QTranslator>

#include <chrono>

namespace {
// By when the daemon has answered, and what moves has come to rest.
constexpr std::chrono::milliseconds PictureTime{1500};
} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("ozdevice"));
    QCommandLineParser words;
    words.setApplicationDescription(QStringLiteral("Shows a phone, and tells a simulated one what to do."));
    words.addHelpOption();
    words.addOption({QStringLiteral("picture"), QStringLiteral("Takes a picture of the window, and ends."),
        QStringLiteral("file")});
    words.addOption(
        {QStringLiteral("page"), QStringLiteral("Begins with this facility."), QStringLiteral("name")});
    words.addOption({QStringLiteral("dark"), QStringLiteral("Begins with light on dark.")});
    words.addOption({QStringLiteral("size"), QStringLiteral("The window's size, such as 360x640."),
        QStringLiteral("size")});
    words.process(application);

    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    QTranslator translator;
    if (translator.load(QLocale(), QStringLiteral("panel"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        QGuiApplication::installTranslator(&translator);

    QQmlApplicationEngine engine;
    const QString here = QGuiApplication::applicationDirPath() + u'/';
    engine.addImportPath(here + QStringLiteral(OZ_MODULES_FROM_PROGRAM));
    engine.addImportPath(here + QLatin1String("../qml"));
    QVariantMap properties{{QStringLiteral("dark"), words.isSet(QStringLiteral("dark"))}};
    if (words.isSet(QStringLiteral("page")))
        properties.insert(QStringLiteral("page"), words.value(QStringLiteral("page")));
    if (const QStringList size = words.value(QStringLiteral("size")).split(u'x'); size.size() == 2) {
        properties.insert(QStringLiteral("width"), size[0].toInt());
        properties.insert(QStringLiteral("height"), size[1].toInt());
    }
    engine.setInitialProperties(properties);
    engine.loadData("import oz.panel\nPanelWindow { }\n");
    if (engine.rootObjects().isEmpty())
        return 1;
    if (const QString file = words.value(QStringLiteral("picture")); !file.isEmpty()) {
        auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
        QTimer::singleShot(PictureTime, window,
            [window, file] { QGuiApplication::exit(window->grabWindow().save(file) ? 0 : 1); });
    }
    return QGuiApplication::exec();
}
