#include "cast/CastRig.hpp"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <stdexcept>
#include <unistd.h>

namespace oz::harness {

CastDaemon::CastDaemon(const QString &socket)
{
    QDir().mkpath(QFileInfo(socket).path());
    m_server.listen(socket);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        m_client = m_server.nextPendingConnection();
        connect(m_client, &QLocalSocket::readyRead, this, &CastDaemon::receive);
        connect(m_client, &QLocalSocket::disconnected, this, [this] { m_client = nullptr; });
    });
}

void CastDaemon::send(const QString &kind, const QJsonObject &content)
{
    ASSERT_TRUE(m_client);
    m_client->write(QJsonDocument(QJsonObject{{kind, content}}).toJson(QJsonDocument::Compact) + '\n');
}

void CastDaemon::receive()
{
    while (m_client->canReadLine()) {
        const QJsonObject message = QJsonDocument::fromJson(m_client->readLine()).object();
        m_messages.append({message.begin().key(), message.begin()->toObject()});
    }
}

QJsonObject CastDaemon::next(const QString &kind)
{
    std::optional<QJsonObject> found;
    const bool has = waitUntil([&] {
        while (!found && !m_messages.isEmpty()) {
            const auto [name, content] = m_messages.takeFirst();
            if (name == kind)
                found = content;
        }
        return found.has_value();
    });
    if (!has)
        throw std::runtime_error("ozcast does not say '" + kind.toStdString() + '\'');
    return *found;
}

QStringList CastDaemon::waiting() const
{
    QStringList kinds;
    for (const auto &[name, content] : m_messages) {
        if (name != "step")
            kinds.append(name);
    }
    return kinds;
}

// Below the ports that the kernel gives to others, and another one for each test that runs beside this one.
CastTest::CastTest() : daemon(root.file("/dev/cast")), port(quint16(20'000 + ::getpid() % 10'000)) { }

// A program that a test has stopped would not hear that it is to end.
CastTest::~CastTest()
{
    agent.end();
}

void CastTest::startAgent(const QStringList &options, const QString &display, const QString &compositor)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", display);
    environment.insert("WAYLAND_DISPLAY", compositor);
    environment.remove("PULSE_SERVER");
    QStringList words{"--step-limit", QString::number(stepLimit), "--keep-alive", "200"};
    if (display.isEmpty() && compositor.isEmpty())
        words.append("--picture");
    agent.run(OZ_CAST, words + options, environment);
    agent.await([this] { return daemon.isConnected(); });
}

QJsonObject CastTest::order(int id) const
{
    return {{"id", id}, {"name", "TV"}, {"address", sink.address()}, {"control-port", sink.controlPort()},
        {"port", port}, {"friendly-name", "phone"}, {"identifier", "00112233445566778899aabbccddeeff"},
        {"connect-limit-ms", 1000}};
}

QJsonObject CastTest::play()
{
    const QJsonObject playing = daemon.next("playing");
    const qsizetype before = sink.packets();
    EXPECT_TRUE(waitUntil([&] { return sink.packets() > before + 10; }));
    return playing;
}

QString CastTest::end()
{
    const QJsonObject ended = daemon.next("ended");
    return ended["why"].toString() + ": " + ended["text"].toString();
}

bool CastTest::isSilent()
{
    settle();
    const qsizetype before = sink.packets();
    return !waitUntil([&] { return sink.packets() > before; }, 250);
}

} // namespace oz::harness
