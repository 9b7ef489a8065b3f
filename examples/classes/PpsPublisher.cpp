#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>

#include <QCoreApplication>
#include <QDebug>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    oz::PpsPublisher lamp(QStringLiteral("/pps/example/lamp"));
    lamp.publish({{QStringLiteral("lit"), true}, {QStringLiteral("color"), QStringLiteral("white")}});
    lamp.publish({{QStringLiteral("lit"), false}}); // the colour stays

    oz::PpsObject reader(lamp.path());
    if (reader.open(oz::PpsOpenMode::Subscribe))
        qInfo().noquote() << reader.read().trimmed();
    lamp.remove();
}

// Over the simulated phone, this prints
//     @lamp
//     color::white
//     lit:b:false
