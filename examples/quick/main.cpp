// Shows the application's Main.qml. With the name of a file, takes a picture of it once it stands still, and
// ends.

#include <QGuiApplication>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

namespace {

// The same picture twice, some time apart, is what the application looks like.
void takePicture(QQuickWindow *window, const QString &file)
{
    auto *timer = new QTimer(window);
    auto before = std::make_shared<QImage>();
    QObject::connect(timer, &QTimer::timeout, window, [window, file, before] {
        const QImage now = window->grabWindow();
        if (!now.isNull() && now == *before)
            QCoreApplication::exit(now.save(file) ? 0 : 1);
        *before = now;
    });
    timer->start(250);
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
#ifdef OZ_QML_MODULES
    engine.addImportPath(QStringLiteral(OZ_QML_MODULES));
#endif
    engine.load(QUrl(QStringLiteral("qrc:/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    if (argc > 1)
        takePicture(
            qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst()), QString::fromLocal8Bit(argv[1]));
    return QGuiApplication::exec();
}
