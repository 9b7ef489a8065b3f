#pragma once

#include "cast/TestSink.hpp"
#include "harness/Process.hpp"
#include "harness/Testing.hpp"

#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>

#include <map>
#include <memory>
#include <vector>

namespace oz::harness {

/*! A stand-in for the services daemon, to which `ozcast` connects. */
class CastDaemon : public QObject
{
public:
    explicit CastDaemon(const QString &socket);

    void send(const QString &kind, const QJsonObject &content);
    /*! The next message of that kind, past all others; throws where none comes. */
    QJsonObject next(const QString &kind);
    /*! The kinds that have come and that nobody has taken, without the steps. */
    [[nodiscard]] QStringList waiting() const;
    void close() { m_client->abort(); }
    [[nodiscard]] bool isConnected() const { return m_client; }

private:
    void receive();

    QLocalServer m_server;
    QLocalSocket *m_client = nullptr;
    QList<std::pair<QString, QJsonObject>> m_messages;
};

/*! A picture of black and white cells, which are the bits of a number, and its size in pixels. */
struct Cells
{
    static constexpr int Width = 1280;
    static constexpr int Height = 720;
    static constexpr int Side = 4; // cells
};

/*! A test of `ozcast` over a daemon's stand-in and a display. Its time limits are short. */
class CastTest : public DeviceTest
{
protected:
    CastTest();
    ~CastTest() override;

    /*! What leads to the screens of a session, as variables of the environment. */
    using Session = std::map<QString, QString>;

    /*! Starts it for the daemon, in a session that has nothing else; with the test card where that is empty.
     */
    void startAgent(const QStringList &options = {}, const Session &session = {});
    /*! What the daemon asks for to have the sink shown something. */
    [[nodiscard]] QJsonObject order(int id = 1) const;
    void cast() { daemon.send("cast", order()); }
    /*! Waits until the cast plays, and packets arrive. */
    QJsonObject play();
    /*! The numbers of the pictures that the display has received, each once in a row. */
    [[nodiscard]] std::vector<unsigned> numbersReceived() const;
    /*! The reason and the text of the cast's end, for which it waits. */
    QString end();
    /*! True if no packet comes for a while. */
    [[nodiscard]] bool isSilent();

    CastDaemon daemon;
    TestSink sink;
    Process agent;
    quint16 port; // where the source listens
    int stepLimit = 2000; // in milliseconds
};

} // namespace oz::harness
