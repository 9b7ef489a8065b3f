#include "cast/CastRig.hpp"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTemporaryFile>

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

void CastTest::startAgent(const QStringList &options, const Session &session)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK", "PULSE_SERVER"})
        environment.remove(name);
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    for (const auto &[name, value] : session)
        environment.insert(name, value);
    QStringList words{"--step-limit", QString::number(stepLimit), "--keep-alive", "200"};
    if (session.empty())
        words.append("--picture");
    agent.run(OZ_CAST, words + options, environment);
    agent.await([this] { return daemon.isConnected(); });
}

QJsonObject CastTest::order(int id) const
{
    return {{"id", id}, {"name", "TV"}, {"address", sink.address()}, {"control-port", sink.controlPort()},
        {"port", port}, {"friendly-name", "phone"}, {"connect-limit-ms", 1000}};
}

QJsonObject CastTest::play()
{
    const QJsonObject playing = daemon.next("playing");
    const qsizetype before = sink.packets();
    EXPECT_TRUE(waitUntil([&] { return sink.packets() > before + 10; }));
    return playing;
}

std::vector<unsigned> CastTest::numbersReceived() const
{
    QTemporaryFile stream;
    QTemporaryFile pictures;
    if (!stream.open() || !pictures.open())
        throw std::runtime_error("no temporary files");
    stream.write(sink.stream());
    stream.close();
    Process decoder;
    decoder.run("gst-launch-1.0",
        {"-q", "filesrc", "location=" + stream.fileName(), "!", "tsdemux", "!", "h264parse", "!",
            "avdec_h264", "!", "videoconvert", "!", "video/x-raw,format=GRAY8", "!", "filesink",
            "location=" + pictures.fileName()});
    decoder.awaitEnd();
    EXPECT_EQ(decoder.errors(), "");
    const QByteArray decoded = pictures.readAll();
    std::vector<unsigned> numbers;
    for (qsizetype picture = 0; picture + Cells::Width * Cells::Height <= decoded.size();
         picture += Cells::Width * Cells::Height) {
        unsigned number = 0;
        for (int cell = 0; cell < Cells::Side * Cells::Side; ++cell) {
            const int x = cell % Cells::Side * Cells::Width / Cells::Side + Cells::Width / Cells::Side / 2;
            const int y = cell / Cells::Side * Cells::Height / Cells::Side + Cells::Height / Cells::Side / 2;
            number |= unsigned(quint8(decoded[picture + y * Cells::Width + x]) > 128) << cell;
        }
        if (numbers.empty() || numbers.back() != number)
            numbers.push_back(number);
    }
    return numbers;
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
