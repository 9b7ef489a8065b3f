#pragma once

#include "cast/TestSink.hpp"
#include "harness/Process.hpp"
#include "harness/Testing.hpp"

#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>

#include <memory>

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

/*! A test of `ozcast` over a daemon's stand-in and a display. Its time limits are short. */
class CastTest : public DeviceTest
{
protected:
    CastTest();
    ~CastTest() override;

    /*! Starts it for the daemon, with the test card unless a screen is named. */
    void startAgent(
        const QStringList &options = {}, const QString &display = {}, const QString &compositor = {});
    /*! What the daemon asks for to have the sink shown something. */
    [[nodiscard]] QJsonObject order(int id = 1) const;
    void cast() { daemon.send("cast", order()); }
    /*! Waits until the cast plays, and packets arrive. */
    QJsonObject play();
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
