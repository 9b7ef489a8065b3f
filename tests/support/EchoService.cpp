// The service behind the object that the tests talk to, as a process that can be killed: it answers "echo",
// and does what other messages say.

#include <oz/PpsServer.hpp>

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <unistd.h>

using namespace oz;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    PpsServer server(words.value(1));
    QObject::connect(
        &server, &PpsServer::received, [&](const PpsServer::Client &client, const QByteArray &message) {
            if (message == "die")
                ::_exit(0);
            if (message == "who")
                server.send(client.id, QVariantMap{{"pid", int(client.pid)}, {"uid", int(client.uid)}});
            else if (message == "leave")
                server.disconnectClient(client.id);
            else if (message == "late")
                QTimer::singleShot(100, &server, [&, id = client.id] { server.send(id, "at last"); });
            else if (message == "shout")
                for (quint64 id = 1; id <= client.id; ++id)
                    server.send(id, QByteArray("to all"));
            else if (message != "silence")
                server.send(client.id, "echo " + message);
        });
    QThread::msleep(words.value(2).toULong());
    return server.listen() ? QCoreApplication::exec() : 1;
}
