#include <oz/PpsObject.hpp>
#include <oz/PpsServer.hpp>

#include <QCoreApplication>
#include <QDebug>

using oz::PpsServer;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    PpsServer service(QStringLiteral("/pps/example/control"));
    QObject::connect(
        &service, &PpsServer::received, [&](const PpsServer::Client &client, const QByteArray &message) {
            qInfo() << "asked:" << message;
            service.send(client.id, {{QStringLiteral("res"), QStringLiteral("done")}});
        });
    if (!service.listen())
        return 1;

    oz::PpsObject user(service.path()); // which may be in any process
    QObject::connect(&user, &oz::PpsObject::readyRead, [&] {
        qInfo() << "answered:" << user.read();
        QCoreApplication::quit();
    });
    if (!user.open(oz::PpsOpenMode::PublishSubscribe))
        return 1;
    user.write(oz::PpsObject::encode({{QStringLiteral("msg"), QStringLiteral("light")}}));
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     asked: "msg::light\n"
//     answered: "@control\nres::done\n"
